#pragma once

#include <X11/Xlib.h>

namespace desktop {

/// From now on runs `callback` on the main loop when another client may have given up a key: when it
/// releases one, and when it disconnects. Also runs it once before this call returns, for what
/// happened before the watch was in effect.
///
/// The X server sends no event for either. Its RECORD extension reports both, and nothing else is
/// asked of it: the watch costs nothing while no client does one of the two. It lasts as long as the
/// process, because taking it down would wait for the X server.
///
/// `display` is borrowed. Only the first call does anything. On a server without RECORD the callback
/// never runs. Main thread only.
void WatchForUngrabs(Display* display, void (*callback)());

} // namespace desktop
