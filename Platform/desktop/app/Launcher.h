#pragma once

#include "Platform/desktop/app/EntryCache.h"

/// Starts applications by their desktop entries; see Spawn.h for how a started program lives. The
/// entry's Terminal and DBusActivatable are not looked at.
namespace desktop {

/// Why nothing was started. The values are what `aul_launch_app` returns.
enum LaunchError {
    kLaunchBadId = -1,      ///< null, empty, or it would leave the entries' folders
    kLaunchNoEntry = -2,    ///< no desktop entry, or one that is hidden
    kLaunchBadEntry = -3,   ///< the entry cannot be read or makes no sense
    kLaunchNoProgram = -4,  ///< the entry's program is missing
    kLaunchNotStarted = -5, ///< the system would not start it
};

/// Main thread only.
class Launcher {
public:
    /// Returns the pid, or a `LaunchError` after one line in the log that says which and why.
    /// The caller's process reaps the child.
    int Launch(const char* id);

private:
    EntryCache entries_;
};

} // namespace desktop
