#pragma once

#include <memory>

#include <X11/Xlib.h>

struct CloseDisplay {
    void operator()(Display* display) const { XCloseDisplay(display); }
};
using DisplayConnection = std::unique_ptr<Display, CloseDisplay>;

/// Connects to the display that DISPLAY names. Throws `Failure` when there is none.
DisplayConnection OpenDisplay();
