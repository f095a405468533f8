#pragma once

#include <X11/X.h>

namespace desktop {

/// Makes a toolkit window the place where grabbed keys arrive: key events of the root window go
/// to it, and its canvas takes them although the X focus stays with whoever has it. Also keeps it
/// from bothering a desktop: no focus, no frame, no taskbar entry, nothing to see or to click.
/// Meant to be called before the window is mapped. Returns false when no toolkit window has this id.
bool DirectGrabbedKeysTo(Window window);

/// The window that the keys go to; `None` when there is none.
Window KeyWindow();

} // namespace desktop
