#pragma once

#include <chrono>
#include <Ecore.h>
#include <functional>

namespace desktop {

/// Calls back on the Ecore main loop after half a second, and after each further request twice as
/// much later, up to a minute. After ten calls it stays silent, so that nothing wakes the process
/// for good. Main thread only.
class RetryTimer {
public:
    explicit RetryTimer(std::function<void()> act) : act_(std::move(act)) {}
    RetryTimer(const RetryTimer&) = delete;
    RetryTimer& operator=(const RetryTimer&) = delete;
    ~RetryTimer() { Stop(); }

    /// Begins the schedule, anew if it runs already.
    void Start();

    /// From within the call: asks for the next one. Does nothing at the end of the schedule.
    void Continue();

    void Stop();
    bool IsRunning() const { return timer_ != nullptr; }

private:
    static Eina_Bool OnTime(void* data);
    void Schedule();

    std::function<void()> act_;
    Ecore_Timer* timer_ = nullptr;
    std::chrono::duration<double> delay_{};
    int left_ = 0;
};

} // namespace desktop
