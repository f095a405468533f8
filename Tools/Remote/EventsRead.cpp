#include "Tools/Remote/EventsRead.h"

#include <thread>
#include <unistd.h>

#include "Platform/desktop/x11/XConnection.h"

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kPollInterval{2};

/// The toolkit answers each ping of a window manager when it reads it, in the order of its events, by
/// sending it on to the root window.
class Ping {
public:
    Ping(Display* display, Window window)
        : display_(display), window_(window), name_(XInternAtom(display, "_NET_WM_PING", False)), number_(getpid())
    {
        XSelectInput(display_, DefaultRootWindow(display_), SubstructureNotifyMask);
        XEvent event = {};
        event.xclient.type = ClientMessage;
        event.xclient.window = window_;
        event.xclient.message_type = XInternAtom(display_, "WM_PROTOCOLS", False);
        event.xclient.format = 32;
        event.xclient.data.l[0] = static_cast<long>(name_);
        event.xclient.data.l[1] = number_; // in the place of a time: tells this answer from others
        event.xclient.data.l[2] = static_cast<long>(window_);
        XSendEvent(display_, window_, False, NoEventMask, &event);
    }

    ~Ping() { XSelectInput(display_, DefaultRootWindow(display_), NoEventMask); }

    Ping(const Ping&) = delete;
    Ping& operator=(const Ping&) = delete;

    bool IsAnswered()
    {
        while (XPending(display_) > 0) {
            XEvent event;
            XNextEvent(display_, &event);
            const auto& data = event.xclient.data.l;
            if (event.type == ClientMessage && static_cast<Atom>(data[0]) == name_ && data[1] == number_ &&
                static_cast<Window>(data[2]) == window_) {
                return true;
            }
        }
        return false;
    }

private:
    Display* display_;
    Window window_;
    Atom name_;
    long number_;
};

} // namespace

bool HasReadItsEvents(Display* display, const desktop::InstanceFacts& instance, milliseconds limit)
{
    // `None` is an application without a window for keys, no value one that is still starting.
    if (instance.keyWindow.value_or(None) == None) {
        return instance.keyWindow.has_value();
    }
    desktop::XErrorTrap trap(display);
    Ping ping(display, *instance.keyWindow);
    if (!trap.FailedRequests().empty()) {
        return true; // the window is gone
    }
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!ping.IsAnswered()) {
        const bool gone =
            XGetSelectionOwner(display, XInternAtom(display, desktop::kApplicationId, False)) != instance.window;
        if (gone || std::chrono::steady_clock::now() >= deadline) {
            return gone;
        }
        std::this_thread::sleep_for(kPollInterval);
    }
    return true;
}
