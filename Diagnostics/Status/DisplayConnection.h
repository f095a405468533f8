#pragma once

#include <memory>

#include <X11/Xlib.h>

struct CloseDisplay {
    void operator()(Display* display) const { XCloseDisplay(display); }
};
using DisplayConnection = std::unique_ptr<Display, CloseDisplay>;

/// Connects to the display that DISPLAY names. Throws `std::runtime_error` when there is none.
DisplayConnection OpenDisplay();
