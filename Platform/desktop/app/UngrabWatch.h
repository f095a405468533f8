#pragma once

#include <X11/Xlib.h>

namespace desktop {

/// From now on runs `callback` on the main loop when another client may have released a key grab: when it
/// releases one, and when it disconnects. Also runs it once before this call returns, for releases before
/// the watch took effect.
///
/// The X server sends no event for either. Its RECORD extension reports both and is asked for nothing
/// else, so the watch costs nothing while no client does one of the two. It lasts as long as the process,
/// because ending it would wait for the X server.
///
/// `display` is borrowed. Only the first call does anything. On a server without RECORD the callback
/// never runs. Main thread only.
void WatchForUngrabs(Display* display, void (*callback)());

} // namespace desktop
