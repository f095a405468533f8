#pragma once

#include <string>
#include <string_view>

#include "Platform/desktop/app/DesktopEntry.h"

/// Starts applications by their desktop entries.
///
/// A started program lives on its own: a process group of its own, the environment as this process
/// found it, no descriptor and no signal setting of ours. Its standard streams are /dev/null: it
/// may outlive us or write without end, and our output's reader must notice neither.
/// The entry's Terminal and DBusActivatable are not looked at.
namespace desktop {

/// Why nothing was started.
enum LaunchError {
    kLaunchBadId = -1,      ///< null, empty, or it would leave the entries' folders
    kLaunchNoEntry = -2,    ///< no desktop entry, or one that is hidden
    kLaunchBadEntry = -3,   ///< the entry cannot be read or makes no sense
    kLaunchNoProgram = -4,  ///< the entry's program is missing
    kLaunchNotStarted = -5, ///< the system would not start it
};

/// Main thread only. An entry is parsed when it is new or has changed, not at each launch.
class Launcher {
public:
    /// Returns the pid, or a `LaunchError` after one line in the log that says which and why.
    /// The caller's process reaps the child.
    int Launch(const char* id);

private:
    bool Knows(const EntryFile& file) const;
    int Take(EntryFile file);
    int Start();

    EntryFile file_; ///< of `entry_`
    bool settled_ = false;
    DesktopEntry entry_;
    std::string program_; ///< where the entry's program was found last; empty: nowhere
};

} // namespace desktop
