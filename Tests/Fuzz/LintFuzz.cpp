// A document that the linter finds nothing to say about reads the same on the TV and to a strict
// reader. What can be mended in any document is mended without touching anything else.

#include <cstdint>
#include <string>
#include <string_view>

#include "Tests/Fuzz/Check.h"
#include "Tests/Fuzz/LintAgreement.h"
#include "Tests/Fuzz/LintRepairs.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view document(reinterpret_cast<const char*>(data), size);
    const std::string disagreement = FindDisagreement(document);
    if (!disagreement.empty()) {
        Fail(disagreement);
    }
    const std::string fault = FindRepairFault(document);
    if (!fault.empty()) {
        Fail(fault);
    }
    return 0;
}
