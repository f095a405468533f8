#pragma once

#include <cstddef>
#include <string>

namespace fixtures {

/// A notification daemon's manners, good and bad.
struct ServiceManners {
    bool inhibits = false;     ///< knows the desktop's own inhibition
    bool pauses = false;       ///< has dunst's pause switch
    std::size_t nameBytes = 7; ///< of the name it gives itself
    int nameChanges = 0;       ///< takes and drops its bus name so many times before it keeps it
    enum class Until { kAnswers, kKeepsRequests, kDropsRequests } until = Until::kAnswers; ///< SIGUSR1
};

/// Owns the notification daemon's name on the session bus and serves for ever. SIGUSR1: it answers
/// what it has kept and all that comes. SIGUSR2: it drops its name and lives on.
///
/// Each event is a line in the file `log`: "Inhibit ssa{sv} <application>", "UnInhibit <cookie>",
/// "Get", "Set true", "answers", "ready" once the name is kept, "dropped".
[[noreturn]] void ServeNotifications(const ServiceManners& manners, const std::string& log);

} // namespace fixtures
