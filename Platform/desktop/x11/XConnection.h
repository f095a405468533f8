#pragma once

#include <vector>

#include <X11/Xlib.h>

namespace desktop {

/// The platform's own connection to the X display, opened by the first call that finds a display and kept
/// until the process ends. The toolkit's connection exists only after the first window, and some
/// questions come earlier. Null when there is no display.
Display* OwnDisplay();

/// Catches the X errors of one display's requests for as long as it lives, so that a refusal does not end
/// the process. Traps do not nest.
class XErrorTrap {
public:
    /// Waits for earlier requests first: their errors go to the earlier handler.
    explicit XErrorTrap(Display* display);
    ~XErrorTrap();

    XErrorTrap(const XErrorTrap&) = delete;
    XErrorTrap& operator=(const XErrorTrap&) = delete;

    /// The serial numbers of the requests that failed since the last call, ascending. A request's
    /// number is what `NextRequest` gives right before it.
    std::vector<unsigned long> FailedRequests();

private:
    static int Catch(Display* display, XErrorEvent* error);

    static XErrorTrap* current_;

    Display* display_;
    XErrorHandler previous_;
    std::vector<unsigned long> failed_;
};

} // namespace desktop
