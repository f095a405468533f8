#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <vector>

#include "Diagnostics/Lint/Report.h"
#include "Diagnostics/Lint/Rule.h"

namespace lint {

/// Collects findings up to a limit and counts the rest.
///
/// Kept are the gravest ones, and of equally grave ones the first in the document, so that a
/// thousand notes do not hide an error.
class FindingList {
public:
    FindingList(std::size_t limit, std::set<Rule> ignored);

    /// Whether a finding would be kept; one that would not needs no text, only `Count`.
    bool Wants(Rule rule, std::uint64_t line, std::uint64_t column) const;

    void Count(Rule rule);
    /// Takes what mends a finding of `rule`, whether the finding is kept or not.
    void AddFix(Rule rule, Edit edit);
    /// Takes what `rule` found, and gives it the rule's name and severity.
    void Add(Rule rule, Diagnostic finding);

    /// What was collected, sorted; the list is empty afterwards.
    Report Take();

private:
    /// A rule's place in the documentation decides between findings of one position.
    struct Kept {
        Rule rule;
        Diagnostic diagnostic;
    };

    static bool GoesBefore(const Kept& left, const Kept& right);
    static bool StandsBefore(const Kept& left, const Kept& right);
    bool IsIgnored(Rule rule) const { return ignored_.count(rule) != 0; }

    std::size_t limit_;
    std::set<Rule> ignored_;
    std::vector<Kept> heap_; ///< the one to give up first on top
    Report report_;
};

} // namespace lint
