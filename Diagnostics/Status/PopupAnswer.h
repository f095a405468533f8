#pragma once

#include <optional>
#include <string>

namespace status {

/// What the session bus and its notification daemon tell about popups.
struct PopupAnswer {
    bool busAnswers = false;
    std::string busIdentity;
    std::string daemon; ///< its unique name; empty: none runs
    bool daemonAnswers = false;
    std::string product;        ///< what the daemon calls itself; empty: it does not tell
    std::optional<bool> paused; ///< none: it has no pause switch
};

/// Asks the session bus, whose address is known. Starts nothing and changes nothing.
PopupAnswer AskSessionBus();

} // namespace status
