#include "Diagnostics/Status/DisplayPing.h"

#include <array>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <poll.h>
#include <string>
#include <string_view>

#include <sys/socket.h>

#include "Platform/desktop/x11/XConnection.h"

namespace status {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kPatience{2};

/// Servers that own their screen.
constexpr std::array<std::string_view, 6> kServers = {"Xorg", "Xvfb", "Xephyr", "Xnest", "Xvnc", "Xtigervnc"};

/// Whether an event comes before `end`; takes it.
bool NextEvent(Display* display, Clock::time_point end, XEvent& event)
{
    while (XPending(display) == 0) {
        const auto rest = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now()).count();
        if (rest <= 0) {
            return false;
        }
        pollfd readable = {ConnectionNumber(display), POLLIN, 0};
        poll(&readable, 1, static_cast<int>(rest));
    }
    XNextEvent(display, &event);
    return true;
}

/// The name of the process at the other end; empty for one on another machine.
std::string ServerName(Display* display)
{
    ucred peer = {};
    socklen_t size = sizeof peer;
    if (getsockopt(ConnectionNumber(display), SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0 || peer.pid <= 0) {
        return "";
    }
    std::string name;
    std::getline(std::ifstream("/proc/" + std::to_string(peer.pid) + "/comm"), name);
    return name;
}

} // namespace

bool Answers(Display* display, Window window)
{
    const Window root = DefaultRootWindow(display);
    const Atom protocols = XInternAtom(display, "WM_PROTOCOLS", False);
    const Atom ping = XInternAtom(display, "_NET_WM_PING", False);
    const desktop::XErrorTrap trap(display); // the window may be gone
    // The window answers with the same message to the root window.
    XSelectInput(display, root, SubstructureNotifyMask);
    XEvent question = {};
    question.xclient.type = ClientMessage;
    question.xclient.window = window;
    question.xclient.message_type = protocols;
    question.xclient.format = 32;
    question.xclient.data.l[0] = static_cast<long>(ping);
    question.xclient.data.l[1] = CurrentTime;
    question.xclient.data.l[2] = static_cast<long>(window);
    XSendEvent(display, window, False, NoEventMask, &question);

    const Clock::time_point end = Clock::now() + kPatience;
    for (XEvent event; NextEvent(display, end, event);) {
        if (event.type == ClientMessage && event.xclient.message_type == protocols &&
            static_cast<Atom>(event.xclient.data.l[0]) == ping &&
            static_cast<Window>(event.xclient.data.l[2]) == window) {
            return true;
        }
    }
    return false;
}

bool IsWaylandGuest(Display* display)
{
    const std::string server = ServerName(display);
    for (const std::string_view known : kServers) {
        if (server == known) {
            return false;
        }
    }
    // A local server of an unknown name counts as a guest where this process runs in a Wayland session.
    int ignored = 0;
    const char* session = std::getenv("WAYLAND_DISPLAY");
    return server == "Xwayland" || XQueryExtension(display, "XWAYLAND", &ignored, &ignored, &ignored) == True ||
           (!server.empty() && session != nullptr && *session != '\0');
}

} // namespace status
