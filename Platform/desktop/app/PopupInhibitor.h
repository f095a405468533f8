#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Platform/desktop/bus/NotificationDaemon.h"
#include "Platform/desktop/bus/PopupRecord.h"
#include "Platform/desktop/bus/RetryTimer.h"
#include "Platform/desktop/bus/SessionBus.h"

namespace desktop {

/// Holds the desktop's notifications back: through the daemon's own inhibition, otherwise by pausing
/// dunst. It also asks a daemon that answers late or starts later, and one on a bus that comes back.
/// Main thread only.
///
/// The requests form a chain, each sent when the answer to the one before arrives: owner of the name,
/// Inhibit, and for dunst its pause switch, the bus's identity and the pause itself. On the main loop no
/// request waits for its answer.
///
/// A failure is logged and nothing more: the application works without this.
class PopupInhibitor {
public:
    explicit PopupInhibitor(std::string applicationId);
    PopupInhibitor(const PopupInhibitor&) = delete;
    PopupInhibitor& operator=(const PopupInhibitor&) = delete;
    ~PopupInhibitor();

    /// Joins the session bus; false when there is none yet.
    bool Open();
    void Close();

    /// Returns whether popups are held back now; if not, the main loop keeps trying. Waits for at most two
    /// seconds: `BusConnection::kAnswerTimeout` for each answer.
    bool Begin();

    /// Restores the state before `Begin`. Waits for one answer.
    void End();

private:
    /// The daemon that was changed, and how.
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
