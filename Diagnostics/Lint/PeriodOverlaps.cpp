#include "Diagnostics/Lint/PeriodOverlaps.h"

#include <algorithm>
#include <limits>

namespace lint {

namespace {

/// One for each second up to 24:59:59, rounded up to a power of two. Node 1 is the root, the children of
/// node n are 2n and 2n + 1, and the second s is node kLeaves + s.
constexpr std::size_t kLeaves = 1U << 17U;

/// Up to this many, comparing is cheaper than the 2 MiB of the tree.
constexpr std::size_t kFew = 16;
constexpr std::uint32_t kNone = std::numeric_limits<std::uint32_t>::max();

std::size_t LeafOf(int second)
{
    return kLeaves + static_cast<std::size_t>(second);
}

} // namespace

std::optional<Period> PeriodOverlaps::Add(const Period& period)
{
    if (periods_.size() < kFew) {
        const std::optional<Period> first = FirstOfFew(period);
        periods_.push_back(period);
        return first;
    }
    if (whole_.empty()) {
        whole_.assign(2 * kLeaves, kNone);
        any_.assign(2 * kLeaves, kNone);
        for (std::size_t number = 0; number < periods_.size(); ++number) {
            Cover(LeafOf(periods_[number].start), LeafOf(periods_[number].end), static_cast<std::uint32_t>(number));
        }
    }
    const std::uint32_t first = FirstIn(LeafOf(period.start), LeafOf(period.end));
    Cover(LeafOf(period.start), LeafOf(period.end), static_cast<std::uint32_t>(periods_.size()));
    periods_.push_back(period);
    return first == kNone ? std::nullopt : std::optional<Period>(periods_[first]);
}

std::optional<Period> PeriodOverlaps::FirstOfFew(const Period& period) const
{
    const auto found = std::find_if(periods_.begin(), periods_.end(), [&period](const Period& other) {
        return other.start < period.end && period.start < other.end;
    });
    return found == periods_.end() ? std::nullopt : std::optional<Period>(*found);
}

/// From both ends of the stretch upwards, takes the largest nodes that lie in it. A period meets the stretch
/// if it touches such a node or covers one above it.
std::uint32_t PeriodOverlaps::FirstIn(std::size_t start, std::size_t end) const
{
    std::uint32_t first = kNone;
    const auto take = [&](std::size_t node) {
        first = std::min(first, any_[node]);
        for (std::size_t above = node / 2; above > 0; above /= 2) {
            first = std::min(first, whole_[above]);
        }
    };
    for (; start < end; start /= 2, end /= 2) {
        if (start % 2 == 1) {
            take(start++);
        }
        if (end % 2 == 1) {
            take(--end);
        }
    }
    return first;
}

/// Takes the same nodes as `FirstIn`.
void PeriodOverlaps::Cover(std::size_t start, std::size_t end, std::uint32_t period)
{
    const auto put = [&](std::size_t node) {
        whole_[node] = std::min(whole_[node], period);
        for (std::size_t touched = node; touched > 0; touched /= 2) {
            any_[touched] = std::min(any_[touched], period);
        }
    };
    for (; start < end; start /= 2, end /= 2) {
        if (start % 2 == 1) {
            put(start++);
        }
        if (end % 2 == 1) {
            put(--end);
        }
    }
}

} // namespace lint
