#include "Diagnostics/Watch/Settling.h"

#include <algorithm>

namespace {

constexpr std::chrono::milliseconds kSettleTime{100};
constexpr std::chrono::seconds kLongestSettling{1};

} // namespace

Settling::Clock::time_point Settling::OnChange(Clock::time_point now)
{
    first_ = first_.value_or(now);
    return std::min(now + kSettleTime, *first_ + kLongestSettling);
}
