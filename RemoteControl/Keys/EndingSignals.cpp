#include "RemoteControl/Keys/EndingSignals.h"

#include <algorithm>
#include <ctime>

EndingSignals::EndingSignals()
{
    sigemptyset(&signals_);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
        sigaddset(&signals_, signal);
    }
    pthread_sigmask(SIG_BLOCK, &signals_, &before_);
}

EndingSignals::~EndingSignals()
{
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    if (seen_ > 0) {
        std::raise(seen_);
    }
}

bool EndingSignals::Wait(std::chrono::milliseconds time)
{
    if (seen_ == 0) {
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
        const std::chrono::nanoseconds rest = time - seconds;
        const timespec timeout = {seconds.count(), static_cast<decltype(timespec::tv_nsec)>(rest.count())};
        seen_ = std::max(sigtimedwait(&signals_, nullptr, &timeout), 0);
    }
    return seen_ == 0;
}
