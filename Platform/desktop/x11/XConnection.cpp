#include "Platform/desktop/x11/XConnection.h"

#include <fcntl.h>
#include <utility>

namespace desktop {

Display* OwnDisplay()
{
    static Display* display = nullptr;
    if (display == nullptr) {
        display = XOpenDisplay(nullptr);
        if (display != nullptr) {
            // A launched program must not keep this connection, and with it the selection, alive.
            fcntl(ConnectionNumber(display), F_SETFD, FD_CLOEXEC);
        }
    }
    return display;
}

XErrorTrap* XErrorTrap::current_ = nullptr;

XErrorTrap::XErrorTrap(Display* display) : display_(display)
{
    XSync(display_, False);
    current_ = this;
    previous_ = XSetErrorHandler(Catch);
}

XErrorTrap::~XErrorTrap()
{
    // The errors of the last requests may still be on their way.
    XSync(display_, False);
    XSetErrorHandler(previous_);
    current_ = nullptr;
}

std::vector<unsigned long> XErrorTrap::FailedRequests()
{
    XSync(display_, False);
    return std::exchange(failed_, {});
}

int XErrorTrap::Catch(Display* display, XErrorEvent* error)
{
    if (display == current_->display_) {
        current_->failed_.push_back(error->serial);
        return 0;
    }
    return current_->previous_(display, error);
}

} // namespace desktop
