#pragma once

#include <chrono>
#include <Ecore.h>
#include <functional>

namespace desktop {

/// Calls back on the Ecore main loop: first after half a second, then after twice the delay for each
/// `Continue`, up to a minute. It stops after ten calls, so that it does not wake the process for ever.
/// Main thread only.
class RetryTimer {
public:
    explicit RetryTimer(std::function<void()> act) : act_(std::move(act)) {}
    RetryTimer(const RetryTimer&) = delete;
    RetryTimer& operator=(const RetryTimer&) = delete;
    ~RetryTimer() { Stop(); }

    /// Starts the schedule, or restarts it.
    void Start();

    /// From within the callback: requests the next one. Does nothing at the end of the schedule.
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
