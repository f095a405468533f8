#pragma once

#include <chrono>
#include <optional>

/// When to check after a change. Copying a file makes many changes: a check waits until they pause, but not
/// for ever.
class Settling {
public:
    using Clock = std::chrono::steady_clock;

    /// A change was noticed at `now`. Returns when to check: later than for the change before it, within a bound.
    Clock::time_point OnChange(Clock::time_point now);

    /// The check has been started: the next change is a first one again.
    void Done() { first_.reset(); }

private:
    std::optional<Clock::time_point> first_; ///< of those that were not checked yet
};
