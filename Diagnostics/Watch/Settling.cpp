#include "Diagnostics/Watch/Settling.h"

#include <algorithm>

namespace {

/// The pause after the last change that starts a check.
constexpr std::chrono::milliseconds kSettleTime{100};
/// From the first change on, even without a pause.
constexpr std::chrono::seconds kLongestSettling{1};

} // namespace

Settling::Clock::time_point Settling::OnChange(Clock::time_point now)
{
    first_ = first_.value_or(now);
    return std::min(now + kSettleTime, *first_ + kLongestSettling);
}
