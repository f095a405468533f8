#pragma once

namespace desktop {

/// Teaches Xlib the tool keys' symbols, XF86SimpleMenu and XF86More, which the X headers do not
/// number. Must run before Xlib first translates a key's name; from then on the names and numbers
/// translate both ways. Returns false when Xlib does not know them afterwards.
bool AddToolKeySymbols();

} // namespace desktop
