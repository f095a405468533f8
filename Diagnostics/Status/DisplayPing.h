#pragma once

#include <X11/Xlib.h>

namespace status {

/// Whether the application whose window this is answers within two seconds. Asks as a window manager
/// does: every main loop of a toolkit answers, and nothing else happens.
bool Answers(Display* display, Window window);

/// Whether the display's server shows its windows in a Wayland session, where an X11 program gets only
/// the keys that go to X11 windows.
bool IsWaylandGuest(Display* display);

} // namespace status
