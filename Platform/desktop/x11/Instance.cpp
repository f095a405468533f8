#include "Platform/desktop/x11/Instance.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <poll.h>
#include <string_view>
#include <unistd.h>

#include <X11/Xatom.h>

#include "Platform/desktop/x11/KeyTable.h"
#include "Platform/desktop/x11/XConnection.h"

namespace desktop {

namespace {

constexpr char kPidProperty[] = "_TV_PID";
constexpr char kHeldProperty[] = "_TV_HELD_KEYS";
constexpr char kFailedProperty[] = "_TV_FAILED_KEYS";
constexpr char kReleasedProperty[] = "_TV_RELEASED_KEYS";
constexpr char kKeyWindowProperty[] = "_TV_KEY_WINDOW";
constexpr char kLaunchMessage[] = "_TV_LAUNCH";
constexpr char kLaunchAnswer[] = "_TV_LAUNCH_ANSWER";
constexpr char kEndingSuffix[] = ".ending";

constexpr long kLongestName = 64;
constexpr long kLongestList = kKeyIds * kLongestName;
/// The kernel's own bound, PID_MAX_LIMIT.
constexpr unsigned long kLargestPid = 4194304;

Atom AtomNamed(Display* display, const char* name)
{
    return XInternAtom(display, name, False);
}

/// At most `longs` times four bytes of a property. A property of another type or format counts as empty.
class Property {
public:
    Property(Display* display, Window window, const char* name, Atom type, int format, long longs)
    {
        Atom actualType = None;
        int actualFormat = 0;
        unsigned long rest = 0;
        unsigned char* data = nullptr;
        const int status = XGetWindowProperty(display, window, AtomNamed(display, name), 0, longs, False, type,
                                              &actualType, &actualFormat, &items_, &rest, &data);
        if (status != Success) {
            items_ = 0;
            return;
        }
        data_.reset(data);
        if (actualType != type || actualFormat != format) {
            items_ = 0;
        }
    }

    unsigned long Items() const { return items_; }
    const unsigned char* Data() const { return data_.get(); }

private:
    struct Free {
        void operator()(unsigned char* data) const { XFree(data); }
    };
    std::unique_ptr<unsigned char, Free> data_;
    unsigned long items_ = 0;
};

bool IsKeyName(std::string_view text)
{
    const auto isNameCharacter = [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_';
    };
    return !text.empty() && text.size() < kLongestName && std::all_of(text.begin(), text.end(), isNameCharacter);
}

std::vector<std::string> ReadNames(Display* display, Window window, const char* property)
{
    const Property list(display, window, property, AtomNamed(display, "UTF8_STRING"), 8, kLongestList / 4);
    std::string_view rest(reinterpret_cast<const char*>(list.Data()), list.Items());
    std::vector<std::string> names;
    // A name without its terminator may be cut off, so it does not count.
    for (std::size_t end = rest.find('\0'); end != std::string_view::npos; end = rest.find('\0')) {
        const std::string_view name = rest.substr(0, end);
        if (IsKeyName(name) && names.size() < static_cast<std::size_t>(kKeyIds)) {
            names.emplace_back(name);
        }
        rest.remove_prefix(end + 1);
    }
    return names;
}

std::optional<unsigned long> ReadNumber(Display* display, Window window, const char* name, Atom type)
{
    const Property property(display, window, name, type, 32, 1);
    if (property.Items() != 1) {
        return std::nullopt;
    }
    // Xlib returns 32-bit items as longs.
    unsigned long number = 0;
    std::memcpy(&number, property.Data(), sizeof number);
    return number;
}

pid_t ReadPid(Display* display, Window window)
{
    const unsigned long pid = ReadNumber(display, window, kPidProperty, XA_CARDINAL).value_or(0);
    return pid <= kLargestPid ? static_cast<pid_t>(pid) : 0;
}

void WriteNames(Display* display, Window window, const char* property, const std::vector<std::string>& names)
{
    std::string list;
    for (const std::string& name : names) {
        list.append(name.c_str(), name.size() + 1);
    }
    XChangeProperty(display, window, AtomNamed(display, property), AtomNamed(display, "UTF8_STRING"), 8,
                    PropModeReplace, reinterpret_cast<const unsigned char*>(list.data()),
                    static_cast<int>(list.size()));
}

Window CreateHiddenWindow(Display* display)
{
    return XCreateSimpleWindow(display, DefaultRootWindow(display), -1, -1, 1, 1, 0, 0, 0);
}

void SendMessage(Display* display, Window window, const char* type, Window item)
{
    XEvent message = {};
    message.xclient.type = ClientMessage;
    message.xclient.window = window;
    message.xclient.message_type = AtomNamed(display, type);
    message.xclient.format = 32;
    message.xclient.data.l[0] = static_cast<long>(item);
    // Without a mask, the event goes to the client that created the window.
    XSendEvent(display, window, False, NoEventMask, &message);
}

/// Asks for the events of a window of another client; false when the window is gone.
bool WatchWindow(Display* display, Window window)
{
    XErrorTrap trap(display);
    XSelectInput(display, window, StructureNotifyMask);
    return trap.FailedRequests().empty();
}

/// Reads events until one `isAwaited`; false when none was within the time.
template <typename IsAwaited>
bool AwaitEvent(Display* display, std::chrono::milliseconds timeout, IsAwaited isAwaited)
{
    using Clock = std::chrono::steady_clock;
    const Clock::time_point end = Clock::now() + timeout;
    for (;;) {
        while (XPending(display) > 0) {
            XEvent event;
            XNextEvent(display, &event);
            if (isAwaited(event)) {
                return true;
            }
        }
        const auto rest = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now()).count();
        if (rest <= 0) {
            return false;
        }
        pollfd readable = {ConnectionNumber(display), POLLIN, 0};
        // A signal ends the wait early; the next round waits for the rest.
        poll(&readable, 1, static_cast<int>(rest));
    }
}

bool IsEndOf(Window window, const XEvent& event)
{
    return event.type == DestroyNotify && event.xdestroywindow.window == window;
}

/// While it lives, the X server serves no other client, so that only one of two starts becomes the
/// instance.
class ServerGrab {
public:
    explicit ServerGrab(Display* display) : display_(display) { XGrabServer(display_); }
    ~ServerGrab()
    {
        XUngrabServer(display_);
        XSync(display_, False);
    }
    ServerGrab(const ServerGrab&) = delete;
    ServerGrab& operator=(const ServerGrab&) = delete;

private:
    Display* display_;
};

} // namespace

std::optional<InstanceFacts> ReadInstance(Display* display, const char* applicationId)
{
    InstanceFacts facts;
    facts.window = XGetSelectionOwner(display, AtomNamed(display, applicationId));
    if (facts.window == None) {
        return std::nullopt;
    }
    // The owner may disappear at any moment.
    const XErrorTrap trap(display);
    facts.pid = ReadPid(display, facts.window);
    if (facts.pid == 0) {
        return std::nullopt;
    }
    facts.heldKeys = ReadNames(display, facts.window, kHeldProperty);
    facts.failedKeys = ReadNames(display, facts.window, kFailedProperty);
    facts.releasedKeys = ReadNames(display, facts.window, kReleasedProperty);
    facts.keyWindow = ReadNumber(display, facts.window, kKeyWindowProperty, XA_WINDOW);
    return facts;
}

LaunchAnswer RequestLaunch(Display* display, const InstanceFacts& instance, std::chrono::milliseconds timeout)
{
    // Watched before the request goes out: the instance may end without an answer.
    if (!WatchWindow(display, instance.window)) {
        return LaunchAnswer::kGone;
    }
    const Window replies = CreateHiddenWindow(display);
    {
        const XErrorTrap trap(display);
        SendMessage(display, instance.window, kLaunchMessage, replies);
    }
    const Atom answer = AtomNamed(display, kLaunchAnswer);
    LaunchAnswer result = LaunchAnswer::kSilent;
    AwaitEvent(display, timeout, [&](const XEvent& event) {
        if (IsEndOf(instance.window, event)) {
            result = LaunchAnswer::kGone;
        } else if (event.type == ClientMessage && event.xclient.window == replies &&
                   event.xclient.message_type == answer) {
            result = LaunchAnswer::kTold;
        }
        return result != LaunchAnswer::kSilent;
    });
    XDestroyWindow(display, replies);
    XFlush(display);
    return result;
}

InstanceClaim::InstanceClaim(Display* display, const char* applicationId)
    : display_(display), ending_(AtomNamed(display, (std::string(applicationId) + kEndingSuffix).c_str()))
{
    // The properties are set before the selection: an owner without them counts as another program.
    window_ = CreateHiddenWindow(display_);
    launch_ = AtomNamed(display_, kLaunchMessage);
    const auto pid = static_cast<unsigned long>(getpid());
    XChangeProperty(display_, window_, AtomNamed(display_, kPidProperty), XA_CARDINAL, 32, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(&pid), 1);
    PublishKeys({}, {});

    const ServerGrab grab(display_);
    other_ = ReadInstance(display_, applicationId);
    if (!other_) {
        XSetSelectionOwner(display_, AtomNamed(display_, applicationId), window_, CurrentTime);
    }
}

InstanceClaim::~InstanceClaim()
{
    if (window_ != None) {
        XDestroyWindow(display_, window_);
        XFlush(display_);
    }
}

void InstanceClaim::WaitForPredecessor(std::chrono::milliseconds timeout)
{
    const Window predecessor = XGetSelectionOwner(display_, ending_);
    if (predecessor != None && WatchWindow(display_, predecessor)) {
        AwaitEvent(display_, timeout, [&](const XEvent& event) { return IsEndOf(predecessor, event); });
    }
}

void InstanceClaim::GiveUp()
{
    if (window_ == None || other_) {
        return;
    }
    // This window lives until the process ends: its destruction tells the successor.
    XSetSelectionOwner(display_, ending_, CreateHiddenWindow(display_), CurrentTime);
    XDestroyWindow(display_, window_);
    XFlush(display_);
    window_ = None;
}

void InstanceClaim::PublishKeys(const std::vector<std::string>& held, const std::vector<std::string>& failed)
{
    if (window_ == None) {
        return;
    }
    WriteNames(display_, window_, kHeldProperty, held);
    WriteNames(display_, window_, kFailedProperty, failed);
    XFlush(display_);
}

void InstanceClaim::PublishKeyWindow(Window window)
{
    if (window_ == None) {
        return;
    }
    XChangeProperty(display_, window_, AtomNamed(display_, kKeyWindowProperty), XA_WINDOW, 32, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(&window), 1);
    XFlush(display_);
}

void InstanceClaim::PublishReleasedKeys(const std::vector<std::string>& released)
{
    if (window_ == None) {
        return;
    }
    WriteNames(display_, window_, kReleasedProperty, released);
    XFlush(display_);
}

bool InstanceClaim::IsLaunchRequest(const XEvent& event) const
{
    return window_ != None && event.type == ClientMessage && event.xclient.window == window_ &&
           event.xclient.message_type == launch_;
}

void InstanceClaim::AnswerLaunchRequest(const XEvent& event)
{
    const auto asking = static_cast<Window>(event.xclient.data.l[0]);
    if (asking != None) {
        // The window may be gone, or may never have existed.
        const XErrorTrap trap(display_);
        SendMessage(display_, asking, kLaunchAnswer, None);
    }
}

} // namespace desktop
