#pragma once

#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

#include <X11/Xlib.h>

/// Which process is the application's one instance on an X display.
///
/// The instance owns the X selection that is named after the application's id. The selection's
/// window, never shown, carries what tools may read:
///
///     _TV_PID          CARDINAL/32    the instance's process
///     _TV_HELD_KEYS    UTF8_STRING/8  names of the keys it holds, each ended by a zero byte
///     _TV_FAILED_KEYS  UTF8_STRING/8  names of the keys that another client holds, wholly or in
///                                     one combination with modifiers; the same form
///     _TV_KEY_WINDOW   WINDOW/32      the window that the keys go to, or 0; there as soon as the
///                                     main loop runs
///
/// A client message _TV_LAUNCH to that window asks the instance to come forward. The X server
/// forgets all of it at the moment the process ends, however it ends.
namespace desktop {

/// The id of the application that this build belongs to.
extern const char* const kApplicationId;

struct InstanceFacts {
    Window window = None;
    pid_t pid = 0;
    std::vector<std::string> heldKeys;
    std::vector<std::string> failedKeys;
    /// The window that the keys go to, `None` when they go nowhere; nothing while the instance is
    /// still starting.
    std::optional<Window> keyWindow;
};

/// The running instance; nothing when there is none, or when the selection's owner does not tell
/// its process and so is some other program. What the properties hold is checked: names that no
/// key could have are left out, and no more is read than the key table could fill.
std::optional<InstanceFacts> ReadInstance(Display* display, const char* applicationId = kApplicationId);

/// Asks a running instance to come forward. Has left for the server when the call returns.
void RequestLaunch(Display* display, const InstanceFacts& instance);

/// This process's claim to be the instance.
class InstanceClaim {
public:
    /// Becomes the instance, unless one runs: then `OtherInstance` tells which.
    /// `display` is borrowed and must outlive the claim.
    explicit InstanceClaim(Display* display, const char* applicationId = kApplicationId);
    ~InstanceClaim();

    InstanceClaim(const InstanceClaim&) = delete;
    InstanceClaim& operator=(const InstanceClaim&) = delete;

    const std::optional<InstanceFacts>& OtherInstance() const { return other_; }

    /// Replaces the published key lists.
    void PublishKeys(const std::vector<std::string>& held, const std::vector<std::string>& failed);

    /// Publishes the window that the keys go to, and that the main loop runs.
    void PublishKeyWindow(Window window);

    /// True for the message of a second start.
    bool IsLaunchRequest(const XEvent& event) const;

private:
    Display* display_;
    Window window_ = None;
    Atom launch_ = None;
    std::optional<InstanceFacts> other_;
};

} // namespace desktop
