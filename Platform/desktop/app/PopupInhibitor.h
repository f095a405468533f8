#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Platform/desktop/bus/NotificationDaemon.h"
#include "Platform/desktop/bus/PopupRecord.h"
#include "Platform/desktop/bus/RetryTimer.h"
#include "Platform/desktop/bus/SessionBus.h"

namespace desktop {

/// Holds the desktop's notifications back: through the daemon's own inhibition, else by pausing
/// dunst. A daemon that answers late, that starts later, or again, is asked as well, and so is one
/// on a bus that comes back. Main thread only.
///
/// The daemon is asked question by question, each from the answer to the one before: owner of the
/// name, Inhibit, and for dunst its pause switch, the bus's identity and the pause itself. On the
/// main loop no question waits for its answer.
///
/// What cannot be done is a line in the log, never more: the application lives without it.
class PopupInhibitor {
public:
    explicit PopupInhibitor(std::string applicationId);
    PopupInhibitor(const PopupInhibitor&) = delete;
    PopupInhibitor& operator=(const PopupInhibitor&) = delete;
    ~PopupInhibitor();

    /// Joins the session bus; false when there is none yet.
    bool Open();
    void Close();

    /// Returns whether popups are held back now; if not, the main loop goes on trying. Waits for
    /// two seconds at the very most: `BusConnection::kAnswerTimeout` for each answer.
    bool Begin();

    /// Gives popups back as they were found. Waits for one answer.
    void End();

private:
    /// What was done to which daemon.
    struct Held {
        std::string daemon;
        bool inhibited;
        std::uint32_t cookie;
        bool pausedBefore;
    };

    void OnJoined();
    void OnBusLost();
    void OnOwner(const std::string& owner);
    void OnRetry();

    void AskForOwner();
    void AskDaemon();
    void OnInhibited(const BusReply& reply);
    void OnPausedFound(const BusReply& reply);
    void Pause(bool pausedBefore);
    void OnPaused(const BusReply& reply);

    void LogSilence();
    void LogHeld();
    Result<void> Save(const Held& held);
    static BusMessage RestoreRequest(const Held& held);
    void GiveBackWithoutWaiting();

    std::string applicationId_;
    std::string recordFile_;
    std::string busIdentity_; ///< empty: not known yet
    SessionBus bus_;

    bool wanted_ = false;        ///< between `Begin` and `End`
    std::string owner_;          ///< the daemon that has the name; empty: none is known
    bool undecided_ = false;     ///< neither held back by the owner nor refused yet
    std::string asked_;          ///< the daemon that was asked last
    bool silenceLogged_ = false; ///< for the owner
    RetryTimer retry_{[this] { OnRetry(); }};
    std::optional<Held> held_;
};

} // namespace desktop
