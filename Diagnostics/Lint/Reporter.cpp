#include "Diagnostics/Lint/Reporter.h"

#include <utility>

namespace lint {

Range Reporter::Kept(Range range) const
{
    range.source = window_.SnippetAt(range.position, range.size);
    return range;
}

void Reporter::Report(const Range& range, Problem problem)
{
    reported_.set(static_cast<std::size_t>(problem.rule));
    std::optional<Edit> fix;
    if (!problem.meant.empty() && range.bytes) {
        fix = Edit{range.position.offset, *range.bytes, std::move(problem.meant)};
        findings_.AddFix(problem.rule, *fix);
    }
    if (!findings_.Wants(problem.rule, range.position.line, range.position.column)) {
        findings_.Count(problem.rule);
        return;
    }
    Diagnostic finding;
    finding.line = range.position.line;
    finding.column = range.position.column;
    finding.source = range.source ? *range.source : window_.SnippetAt(range.position, range.size);
    finding.endColumn = range.position.column + CharactersIn(finding.source);
    finding.message = std::move(problem.message);
    finding.expected = std::move(problem.expected);
    finding.effect = std::move(problem.effect);
    finding.fix = std::move(fix);
    findings_.Add(problem.rule, std::move(finding));
}

} // namespace lint
