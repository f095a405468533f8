#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Platform/desktop/bus/PopupRecord.h"
#include "Platform/desktop/bus/SessionBus.h"

namespace desktop {

class NotificationDaemon;

/// Holds the desktop's notifications back: through the daemon's own inhibition, else by pausing
/// dunst. A daemon that starts later, or again, is asked as well. Main thread only.
///
/// What cannot be done is one line in the log, never more: the application lives without it.
class PopupInhibitor {
public:
    explicit PopupInhibitor(std::string applicationId);
    PopupInhibitor(const PopupInhibitor&) = delete;
    PopupInhibitor& operator=(const PopupInhibitor&) = delete;
    ~PopupInhibitor();

    /// Joins the session bus; false when there is none.
    bool Open();
    void Close();

    /// Returns whether popups are held back now. It blocks for two seconds at the very most.
    bool Begin();

    /// Gives popups back as they were found.
    void End();

private:
    /// What was done to which daemon.
    struct Held {
        std::string daemon;
        bool inhibited;
        std::uint32_t cookie;
        bool pausedBefore;
    };

    void OnDaemonChanged(const std::string& daemon);
    bool Apply(const std::string& daemonName);
    bool ApplyPause(NotificationDaemon& daemon);
    bool Save(const Held& held);

    std::string applicationId_;
    std::string recordFile_;
    std::string busIdentity_;
    SessionBus bus_;
    std::optional<Held> held_;
};

/// Gives popups back right now, if this process holds any back. For the moment before an
/// emergency exit; the main loop need not run any more.
void RestorePopupsNow();

} // namespace desktop
