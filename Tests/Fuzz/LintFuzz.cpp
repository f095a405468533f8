// A document that the linter finds nothing to say about reads the same on the TV and to a strict
// reader.

#include <cstdint>
#include <string>
#include <string_view>

#include "Tests/Fuzz/Check.h"
#include "Tests/Fuzz/LintAgreement.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string disagreement = FindDisagreement({reinterpret_cast<const char*>(data), size});
    if (!disagreement.empty()) {
        Fail(disagreement);
    }
    return 0;
}
