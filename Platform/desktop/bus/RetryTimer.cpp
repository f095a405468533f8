#include "Platform/desktop/bus/RetryTimer.h"

#include <algorithm>
#include <utility>

namespace desktop {

namespace {

using Seconds = std::chrono::duration<double>;

constexpr Seconds kFirstDelay{0.5};
constexpr Seconds kLongestDelay{60};
constexpr int kMostCalls = 10;

} // namespace

void RetryTimer::Start()
{
    Stop();
    delay_ = kFirstDelay;
    left_ = kMostCalls;
    Schedule();
}

void RetryTimer::Continue()
{
    if (timer_ == nullptr && left_ > 0) {
        delay_ = std::min(2 * delay_, kLongestDelay);
        Schedule();
    }
}

void RetryTimer::Stop()
{
    if (timer_ != nullptr) {
        ecore_timer_del(std::exchange(timer_, nullptr));
    }
}

void RetryTimer::Schedule()
{
    --left_;
    timer_ = ecore_timer_add(delay_.count(), OnTime, this);
}

Eina_Bool RetryTimer::OnTime(void* data)
{
    auto* self = static_cast<RetryTimer*>(data);
    self->timer_ = nullptr; // deleted by the result
    self->act_();
    return ECORE_CALLBACK_CANCEL;
}

} // namespace desktop
