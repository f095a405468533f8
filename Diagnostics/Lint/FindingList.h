#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <vector>

#include "Diagnostics/Lint/Finding.h"

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
    void Add(Finding finding);

    /// What was collected, sorted; the list is empty afterwards.
    Report Take();

private:
    bool IsIgnored(Rule rule) const { return ignored_.count(rule) != 0; }

    std::size_t limit_;
    std::set<Rule> ignored_;
    std::vector<Finding> heap_; ///< the one to give up first on top
    Report report_;
};

} // namespace lint
