#pragma once

#include <chrono>
#include <csignal>

/// Holds back the signals that end the program, so that what must not be left half done is done;
/// lets one through when it is destroyed. One thread, one object at a time.
class EndingSignals {
public:
    EndingSignals();
    ~EndingSignals();

    EndingSignals(const EndingSignals&) = delete;
    EndingSignals& operator=(const EndingSignals&) = delete;

    /// Waits for `time`. False when a signal has come: then at once, this time and from now on.
    bool Wait(std::chrono::milliseconds time);

private:
    sigset_t signals_ = {};
    sigset_t before_ = {};
    int seen_ = 0;
};
