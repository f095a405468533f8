#include "Diagnostics/Lint/Repairs.h"

namespace lint {

std::vector<Edit> FindRepairs(std::string_view document, Options options)
{
    options.maxFindings = 0; // fixes are collected all the same
    std::vector<Edit> edits;
    std::vector<Fix> fixes = Lint(document, options).fixes;
    for (const Fix& fix : fixes) {
        if (fix.rule == Rule::kEncodingDeclaredWrongly) {
            edits.push_back(fix.edit);
        }
    }
    if (!edits.empty()) {
        // What else is wrong shows once the document is read in its true encoding.
        options.asUtf8 = true;
        fixes = Lint(document, options).fixes;
    }
    for (const Fix& fix : fixes) {
        edits.push_back(fix.edit);
    }
    return edits;
}

} // namespace lint
