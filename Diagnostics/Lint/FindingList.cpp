#include "Diagnostics/Lint/FindingList.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace lint {

namespace {

auto Rank(Rule rule, std::uint64_t line, std::uint64_t column)
{
    return std::make_tuple(SeverityOf(rule), line, column, rule);
}

bool GoesBefore(const Finding& left, const Finding& right)
{
    return Rank(left.rule, left.line, left.column) < Rank(right.rule, right.line, right.column);
}

bool StandsBefore(const Finding& left, const Finding& right)
{
    return std::tie(left.line, left.column, left.rule, left.message) <
           std::tie(right.line, right.column, right.rule, right.message);
}

} // namespace

FindingList::FindingList(std::size_t limit, std::set<Rule> ignored) : limit_(limit), ignored_(std::move(ignored)) {}

bool FindingList::Wants(Rule rule, std::uint64_t line, std::uint64_t column) const
{
    if (IsIgnored(rule)) {
        return false;
    }
    if (heap_.size() < limit_) {
        return true;
    }
    return !heap_.empty() &&
           Rank(rule, line, column) < Rank(heap_.front().rule, heap_.front().line, heap_.front().column);
}

void FindingList::Count(Rule rule)
{
    if (IsIgnored(rule)) {
        return;
    }
    switch (SeverityOf(rule)) {
    case Severity::kError:
        ++report_.counts.errors;
        break;
    case Severity::kWarning:
        ++report_.counts.warnings;
        break;
    case Severity::kNote:
        ++report_.counts.notes;
        break;
    }
}

void FindingList::Add(Finding finding)
{
    Count(finding.rule);
    if (!Wants(finding.rule, finding.line, finding.column)) {
        return;
    }
    heap_.push_back(std::move(finding));
    std::push_heap(heap_.begin(), heap_.end(), GoesBefore);
    if (heap_.size() > limit_) {
        std::pop_heap(heap_.begin(), heap_.end(), GoesBefore);
        heap_.pop_back();
    }
}

Report FindingList::Take()
{
    std::sort(heap_.begin(), heap_.end(), StandsBefore);
    report_.findings = std::exchange(heap_, {});
    const Counts& counts = report_.counts;
    report_.notKept = counts.errors + counts.warnings + counts.notes - report_.findings.size();
    return std::exchange(report_, {});
}

} // namespace lint
