#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

#include <X11/Xlib.h>

#include "Platform/desktop/environment/ApplicationId.h"

/// Which process is the application's one instance on an X display.
///
/// The instance owns the X selection that is named after the application's id. The selection's
/// window, never shown, carries what tools may read:
///
///     _TV_PID          CARDINAL/32    the instance's process
///     _TV_HELD_KEYS    UTF8_STRING/8  names of the keys it holds, each ended by a zero byte
///     _TV_FAILED_KEYS  UTF8_STRING/8  names of the keys that another client holds, wholly or in
///                                     one combination with modifiers; the same form
///     _TV_RELEASED_KEYS  UTF8_STRING/8  names of the keys that it has handed back; the same form
///     _TV_KEY_WINDOW   WINDOW/32      the window that the keys go to, or 0; there as soon as the
///                                     main loop runs
///
/// A client message _TV_LAUNCH/32 to that window asks the instance to come forward. Its first item
/// may name a window of the asking process: that window gets a _TV_LAUNCH_ANSWER in return, unless
/// the instance is about to end. The X server forgets all of it at the moment the process ends,
/// however it ends.
///
/// An instance gives up the name when its end begins, so that a later start takes over. Until the process
/// is gone it owns a second selection, the name followed by ".ending".
namespace desktop {

struct InstanceFacts {
    Window window = None;
    pid_t pid = 0;
    std::vector<std::string> heldKeys;
    std::vector<std::string> failedKeys;
    std::vector<std::string> releasedKeys;
    /// The window that the keys go to, `None` when they go nowhere; nothing while the instance is
    /// still starting.
    std::optional<Window> keyWindow;
};

/// The running instance; none when there is none, or when the selection's owner publishes no process and
/// so is some other program. The properties are checked: names that no key could have are left out, and
/// at most as much is read as the key table could fill.
std::optional<InstanceFacts> ReadInstance(Display* display, const char* applicationId = kApplicationId);

enum class LaunchAnswer {
    kTold,   ///< the instance comes forward
    kGone,   ///< the instance has given up its name
    kSilent, ///< neither before the timeout
};

/// Asks a running instance to come forward and waits for its answer, at most for `timeout`. Events
/// that arrive on `display` in the meantime are lost.
LaunchAnswer RequestLaunch(Display* display, const InstanceFacts& instance, std::chrono::milliseconds timeout);

/// This process's claim to be the instance. Main thread only.
class InstanceClaim {
public:
    /// Becomes the instance, unless another one runs: `OtherInstance` is that one.
    /// `display` is borrowed and must outlive the claim.
    explicit InstanceClaim(Display* display, const char* applicationId = kApplicationId);
    ~InstanceClaim();

    InstanceClaim(const InstanceClaim&) = delete;
    InstanceClaim& operator=(const InstanceClaim&) = delete;

    const std::optional<InstanceFacts>& OtherInstance() const { return other_; }

    /// Waits until an instance that has given up the name is gone, at most for `timeout`: what it restores
    /// at its end must not undo what this one does. Events that arrive on the display in the meantime are
    /// lost.
    void WaitForPredecessor(std::chrono::milliseconds timeout);

    /// Gives up the name, because this process is about to end. Does not wait. Does nothing without the
    /// name.
    void GiveUp();

    /// Replaces the published key lists.
    void PublishKeys(const std::vector<std::string>& held, const std::vector<std::string>& failed);

    /// Replaces the published list of keys that were handed back.
    void PublishReleasedKeys(const std::vector<std::string>& released);

    /// Publishes the window that the keys go to, and that the main loop runs.
    void PublishKeyWindow(Window window);

    /// True for the message of a second start.
    bool IsLaunchRequest(const XEvent& event) const;
    /// Answers the process that sent this request.
    void AnswerLaunchRequest(const XEvent& event);

private:
    Display* display_;
    Atom ending_ = None;
    Window window_ = None;
    Atom launch_ = None;
    std::optional<InstanceFacts> other_;
};

} // namespace desktop
