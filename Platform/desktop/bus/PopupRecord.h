#pragma once

#include <optional>
#include <string>
#include <sys/types.h>

#include "Platform/desktop/base/Result.h"

namespace desktop {

/// The state before popups were held back, kept in a file until they are restored: the next start after
/// a kill restores the true state, and tools can report which process holds popups back.
///
/// The file is "<application id>.popups" in $XDG_RUNTIME_DIR, lines of "name=value":
///
///     pid=1234                   the process that holds them back
///     bus=3f0c…                  the identity of the session bus
///     daemon=:1.7                the notification daemon's name on that bus
///     how=paused                 or "inhibited", which the daemon ends by itself with the process
///     before=running             or "paused": the daemon's state before
///
/// Without a file, nothing is held back. A record whose process no longer lives was left by a kill.
struct PopupRecord {
    pid_t pid = 0;
    std::string bus;
    std::string daemon;
    bool inhibited = false;
    bool pausedBefore = false;
};

/// Where the record of an application lies; empty when $XDG_RUNTIME_DIR is not set.
std::string PopupRecordFile(const std::string& applicationId);

/// None: there is no record, or it cannot be read.
std::optional<PopupRecord> ReadPopupRecord(const std::string& path);

/// Replaces the record, and syncs it to disk: it must survive a kill that follows at once.
Result<void> WritePopupRecord(const std::string& path, const PopupRecord& record);
void RemovePopupRecord(const std::string& path);

} // namespace desktop
