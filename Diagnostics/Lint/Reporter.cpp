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
    findings_.Add(problem.rule, std::move(finding));
}

} // namespace lint
