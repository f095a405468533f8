#include "Diagnostics/Lint/ParseErrorText.h"

#include "Diagnostics/Lint/Lint.h"

namespace lint {

Options OnlyWhatRejects()
{
    Options options;
    for (const std::string& name : RuleNames()) {
        options.ignored.insert(*FindRule(name));
    }
    options.ignored.erase(Rule::kNotWellFormed);
    options.ignored.erase(Rule::kUnreadableEncoding);
    options.ignored.erase(Rule::kEncodingDeclaredWrongly);
    options.maxFindings = 1;
    return options;
}

std::string ParseErrorText(const Report& report)
{
    if (report.findings.empty()) {
        return "the library rejects it";
    }
    const Diagnostic& finding = report.findings.front();
    return "line " + std::to_string(finding.line) + ", column " + std::to_string(finding.column) + ": " +
           finding.message;
}

std::string ParseErrorText(const std::string& document)
{
    return ParseErrorText(Lint(document, OnlyWhatRejects()));
}

std::string ParseErrorText(const ByteSource& source)
{
    return ParseErrorText(Lint(source, OnlyWhatRejects()));
}

} // namespace lint
