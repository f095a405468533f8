#pragma once

#include <string>

#include <sys/types.h>

namespace status {

/// Whether popups are held back, and by whom.
struct PopupStatus {
    enum class State {
        kUnknown,
        kShown,    ///< nothing holds them back
        kHeldBack, ///< for the application
        kLeftOver, ///< for an application that was killed; the next one restores them when it exits
        kForeign,  ///< not for the application: somebody else paused the daemon
    };

    State state = State::kUnknown;
    std::string service; ///< the notification daemon; empty: none is known. Not escaped
    pid_t pid = 0;       ///< who asked for it, as its record says; 0: none did
    std::string why;     ///< why it is not known, or why nothing holds them back; may be empty
};

/// "held-back" and so on, for programs.
std::string NameOf(PopupStatus::State state);

/// Starts no bus and no daemon, and waits a few seconds at the most.
PopupStatus CollectPopups();

} // namespace status
