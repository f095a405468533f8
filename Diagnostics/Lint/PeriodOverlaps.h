#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace lint {

/// A period of the day, from `start` up to but not including `end`, in seconds.
struct Period {
    int start = 0;
    int end = 0;
    std::uint64_t line = 0;
};

/// Finds out as periods come which of the earlier ones they overlap.
///
/// A few periods are compared one by one. From more of them on a tree over the seconds of the day keeps for
/// each stretch the first period that lies in it, so that a period costs the same however many came before.
class PeriodOverlaps {
public:
    /// Adds a period and gives the earliest one that it overlaps; touching is not overlapping. The
    /// period is not empty and ends by 24:59:59.
    std::optional<Period> Add(const Period& period);

private:
    std::optional<Period> FirstOfFew(const Period& period) const;
    std::uint32_t FirstIn(std::size_t start, std::size_t end) const;
    void Cover(std::size_t start, std::size_t end, std::uint32_t period);

    std::vector<Period> periods_;

    // By node of the tree, and empty while the periods are few.

    std::vector<std::uint32_t> whole_; ///< the first period that covers all of it
    std::vector<std::uint32_t> any_;   ///< the first period that touches it
};

} // namespace lint
