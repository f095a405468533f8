#include "Diagnostics/Lint/FindingList.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace lint {

namespace {

/// The lowest rank is kept longest: errors first, then by place.
auto Rank(Rule rule, std::uint64_t line, std::uint64_t column)
{
    return std::make_tuple(SeverityOf(rule), line, column, rule);
}

} // namespace

bool FindingList::GoesBefore(const Kept& left, const Kept& right)
{
    return Rank(left.rule, left.diagnostic.line, left.diagnostic.column) <
           Rank(right.rule, right.diagnostic.line, right.diagnostic.column);
}

bool FindingList::StandsBefore(const Kept& left, const Kept& right)
{
    return std::tie(left.diagnostic.line, left.diagnostic.column, left.rule, left.diagnostic.message) <
           std::tie(right.diagnostic.line, right.diagnostic.column, right.rule, right.diagnostic.message);
}

FindingList::FindingList(std::size_t limit, std::set<Rule> ignored) : limit_(limit), ignored_(std::move(ignored)) {}

bool FindingList::Wants(Rule rule, std::uint64_t line, std::uint64_t column) const
{
    if (IsIgnored(rule)) {
        return false;
    }
    if (heap_.size() < limit_) {
        return true;
    }
    if (heap_.empty()) {
        return false; // the limit is 0
    }
    const Kept& last = heap_.front();
    return Rank(rule, line, column) < Rank(last.rule, last.diagnostic.line, last.diagnostic.column);
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

void FindingList::AddFix(Rule rule, Edit edit)
{
    if (!IsIgnored(rule)) {
        report_.fixes.push_back({rule, std::move(edit)});
    }
}

void FindingList::Add(Rule rule, Diagnostic finding)
{
    Count(rule);
    if (!Wants(rule, finding.line, finding.column)) {
        return;
    }
    finding.id = NameOf(rule);
    finding.severity = SeverityOf(rule);
    heap_.push_back({rule, std::move(finding)});
    std::push_heap(heap_.begin(), heap_.end(), GoesBefore);
    if (heap_.size() > limit_) {
        std::pop_heap(heap_.begin(), heap_.end(), GoesBefore);
        heap_.pop_back();
    }
}

Report FindingList::Take()
{
    std::sort(heap_.begin(), heap_.end(), StandsBefore);
    report_.findings.reserve(heap_.size());
    for (Kept& kept : heap_) {
        report_.findings.push_back(std::move(kept.diagnostic));
    }
    heap_.clear();
    const Counts& counts = report_.counts;
    report_.notKept = counts.errors + counts.warnings + counts.notes - report_.findings.size();
    return std::exchange(report_, {});
}

} // namespace lint
