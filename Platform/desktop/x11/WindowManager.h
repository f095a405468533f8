#pragma once

#include <X11/Xlib.h>

namespace desktop {

/// Whether a window manager runs on the display.
bool IsWindowManaged(Display* display);

} // namespace desktop
