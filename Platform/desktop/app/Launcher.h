#pragma once

#include <sys/types.h>

#include "Platform/desktop/app/DesktopEntry.h"
#include "Platform/desktop/base/Result.h"

/// Starts applications by their desktop entries; Spawn.h describes what a started program gets. The
/// entry's Terminal and DBusActivatable are ignored.
namespace desktop {

/// Why nothing was started. The values are what `aul_launch_app` returns.
enum class LaunchError {
    kBadId = -1,      ///< null, empty, or it would leave the entries' folders
    kNoEntry = -2,    ///< no desktop entry, or one that is hidden
    kBadEntry = -3,   ///< the entry cannot be read or makes no sense
    kNoProgram = -4,  ///< the entry's program is missing
    kNotStarted = -5, ///< the system did not start it
};

/// Main thread only.
class Launcher {
public:
    /// Returns the pid. The error's code is a `LaunchError`. The caller's process reaps the child.
    Result<pid_t> Launch(const char* id);

private:
    EntryCache entries_;
};

} // namespace desktop
