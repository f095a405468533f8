#include "Platform/desktop/x11/WindowManager.h"

#include <memory>

#include <X11/Xatom.h>

#include "Platform/desktop/x11/XConnection.h"

namespace desktop {

namespace {

struct Free {
    void operator()(unsigned char* data) const { XFree(data); }
};

/// The window that a window's property _NET_SUPPORTING_WM_CHECK names.
Window CheckWindow(Display* display, Window window)
{
    Atom type = None;
    int format = 0;
    unsigned long items = 0;
    unsigned long rest = 0;
    unsigned char* data = nullptr;
    const int status = XGetWindowProperty(display, window, XInternAtom(display, "_NET_SUPPORTING_WM_CHECK", False), 0,
                                          1, False, XA_WINDOW, &type, &format, &items, &rest, &data);
    const std::unique_ptr<unsigned char, Free> owner(status == Success ? data : nullptr);
    return owner == nullptr || items != 1 ? None : *reinterpret_cast<const Window*>(data);
}

} // namespace

bool IsWindowManaged(Display* display)
{
    // The root's property outlives a manager that was killed; the window that it names does not.
    const XErrorTrap trap(display);
    const Window manager = CheckWindow(display, DefaultRootWindow(display));
    return manager != None && CheckWindow(display, manager) == manager;
}

} // namespace desktop
