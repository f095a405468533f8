#pragma once

#include <X11/Xlib.h>

namespace desktop {

/// Makes a toolkit window the place where grabbed keys arrive: key events of the root window go to it,
/// and its canvas takes them although the X focus stays where it is. Also keeps the window out of the
/// desktop's way: no focus, no frame, no taskbar entry, nothing to see or to click.
/// Call it before the window is mapped. Returns false when no toolkit window has this id.
bool DirectGrabbedKeysTo(Window window);

/// The window that the keys go to; `None` when there is none.
Window KeyWindow();

/// From now on the events of keys that are grabbed on the display's root windows go to the window,
/// and every press brings exactly one release. Call it once.
///
/// A grab ends with the release of the key that began it. Without this function, the releases of other
/// keys that are down at that moment would go to the client that has the focus. `display` is the
/// toolkit's connection, which the grabs belong to.
void ReceiveGrabbedKeys(Display* display);

} // namespace desktop
