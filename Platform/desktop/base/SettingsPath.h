#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "Platform/common/FileDescriptor.h"
#include "Platform/desktop/base/Result.h"

namespace desktop {

/// Watches one folder and the path to it: each folder and link on that path may be moved, removed,
/// replaced or created, and the path may then lead somewhere else.
///
/// Every folder on the path is watched for its own moves. Changes among the entries of a folder, which
/// other programs cause all the time, are watched only near the end of the path.
class SettingsPath {
public:
    /// `folder` is an absolute path, whose last `own` folders nothing but the settings store uses.
    SettingsPath(std::string folder, std::size_t own);

    /// Watches the path as it is now; later changes are noticed. Succeeds when the folder is watched, or
    /// when it is missing and its appearance is watched. After an error, the part of the path that can be
    /// watched is watched. Call it once.
    Result<void> Watch();

    /// Readable when there are events; -1 before `Watch` and when the system refused.
    int Descriptor() const { return events_.Get(); }

    struct Event {
        enum class Kind {
            kStored,      ///< an entry of the folder was closed by a writer, moved or removed
            kUnderWay,    ///< an entry was created or written to, and more may follow
            kPathChanged, ///< the path leads elsewhere, so this watch no longer helps
            kOverflow,    ///< some events are lost
        };
        Kind kind;
        std::string entry; ///< the entry's name
    };

    /// The events until now, in order. Never waits.
    std::vector<Event> Read();

private:
    /// A folder on the path, and the path's next name in it.
    struct Step {
        std::string folder;
        int watch;
        std::string next;
    };

    /// Where the path could not be followed any further. EAGAIN: it has changed meanwhile.
    struct Obstacle {
        std::string place;
        int error;
    };

    std::optional<Obstacle> Follow();
    int AddWatch(const std::string& path, unsigned events);
    void WatchEndOfPath();
    bool IsOnPath(int watch, const char* name) const;

    std::string folder_;
    std::size_t own_;
    platform::FileDescriptor events_;
    std::vector<Step> steps_;
    int folderWatch_ = -1;
};

} // namespace desktop
