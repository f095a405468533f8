#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "Tests/Fuzz/LintAgreement.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string disagreement = FindDisagreement({reinterpret_cast<const char*>(data), size});
    if (!disagreement.empty()) {
        std::fprintf(stderr, "%s\n", disagreement.c_str());
        std::abort();
    }
    return 0;
}
