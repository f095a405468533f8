#include "Platform/desktop/x11/Instance.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <string_view>
#include <unistd.h>

#include <X11/Xatom.h>

#include "Platform/desktop/x11/KeyTable.h"
#include "Platform/desktop/x11/XConnection.h"

namespace desktop {

const char* const kApplicationId = PLATFORM_APP_ID;

namespace {

constexpr char kPidProperty[] = "_TV_PID";
constexpr char kHeldProperty[] = "_TV_HELD_KEYS";
constexpr char kFailedProperty[] = "_TV_FAILED_KEYS";
constexpr char kKeyWindowProperty[] = "_TV_KEY_WINDOW";
constexpr char kLaunchMessage[] = "_TV_LAUNCH";

constexpr long kLongestName = 64;
constexpr long kLongestList = kKeyIds * kLongestName;
/// The kernel's own bound, PID_MAX_LIMIT.
constexpr unsigned long kLargestPid = 4194304;

Atom AtomNamed(Display* display, const char* name)
{
    return XInternAtom(display, name, False);
}

/// Reads at most `longs` times four bytes of a property; what is of another type or format than
/// expected is not there.
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
    // A name without its end may have been cut off: it does not count.
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
    // Xlib keeps 32-bit items in longs.
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

/// While it lives no other client's requests are served, so that of two starts one comes first.
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
    // The owner may go away at any moment.
    const XErrorTrap trap(display);
    facts.pid = ReadPid(display, facts.window);
    if (facts.pid == 0) {
        return std::nullopt;
    }
    facts.heldKeys = ReadNames(display, facts.window, kHeldProperty);
    facts.failedKeys = ReadNames(display, facts.window, kFailedProperty);
    facts.keyWindow = ReadNumber(display, facts.window, kKeyWindowProperty, XA_WINDOW);
    return facts;
}

void RequestLaunch(Display* display, const InstanceFacts& instance)
{
    const XErrorTrap trap(display);
    XEvent message = {};
    message.xclient.type = ClientMessage;
    message.xclient.window = instance.window;
    message.xclient.message_type = AtomNamed(display, kLaunchMessage);
    message.xclient.format = 32;
    XSendEvent(display, instance.window, False, NoEventMask, &message);
}

InstanceClaim::InstanceClaim(Display* display, const char* applicationId) : display_(display)
{
    // The properties come first: an owner without them is taken for a stranger.
    window_ = XCreateSimpleWindow(display_, DefaultRootWindow(display_), -1, -1, 1, 1, 0, 0, 0);
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
    XDestroyWindow(display_, window_);
    XFlush(display_);
}

void InstanceClaim::PublishKeys(const std::vector<std::string>& held, const std::vector<std::string>& failed)
{
    WriteNames(display_, window_, kHeldProperty, held);
    WriteNames(display_, window_, kFailedProperty, failed);
    XFlush(display_);
}

void InstanceClaim::PublishKeyWindow(Window window)
{
    XChangeProperty(display_, window_, AtomNamed(display_, kKeyWindowProperty), XA_WINDOW, 32, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(&window), 1);
    XFlush(display_);
}

bool InstanceClaim::IsLaunchRequest(const XEvent& event) const
{
    return event.type == ClientMessage && event.xclient.window == window_ && event.xclient.message_type == launch_;
}

} // namespace desktop
