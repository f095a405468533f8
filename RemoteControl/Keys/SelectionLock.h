#pragma once

#include <chrono>

#include <X11/Xlib.h>

#include "RemoteControl/Keys/EndingSignals.h"

/// A lock that at most one process has on an X display: the ownership of a selection. The server
/// lets go of it when the process ends, however it ends.
class SelectionLock {
public:
    /// Waits until the lock is free, for `limit` at most, and only until a signal is to end the
    /// program unless `signals` is null. `display` is borrowed. Throws `std::runtime_error` when another
    /// process keeps the lock.
    SelectionLock(Display* display, const char* name, std::chrono::milliseconds limit, EndingSignals* signals);
    ~SelectionLock();

    SelectionLock(const SelectionLock&) = delete;
    SelectionLock& operator=(const SelectionLock&) = delete;

private:
    bool Try();
    static bool Pause(EndingSignals* signals);

    Display* display_;
    Atom selection_;
    Window window_;
};
