#include "Diagnostics/Lint/Reporter.h"

#include <utility>

namespace lint {

Spot Reporter::Kept(Spot spot) const
{
    spot.source = window_.ExcerptAt(spot.mark, spot.size);
    return spot;
}

void Reporter::Report(const Spot& spot, Problem problem)
{
    if (!findings_.Wants(problem.rule, spot.mark.line, spot.mark.column)) {
        findings_.Count(problem.rule);
        return;
    }
    Finding finding;
    finding.rule = problem.rule;
    finding.line = spot.mark.line;
    finding.column = spot.mark.column;
    finding.source = spot.source ? *spot.source : window_.ExcerptAt(spot.mark, spot.size);
    finding.endColumn = spot.mark.column + CharactersIn(finding.source);
    finding.message = std::move(problem.message);
    finding.expected = std::move(problem.expected);
    finding.effect = std::move(problem.effect);
    findings_.Add(std::move(finding));
}

} // namespace lint
