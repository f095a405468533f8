#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "Platform/desktop/base/FileDescriptor.h"

namespace desktop {

/// Watches one folder, and the way to it: each folder and link on its path may be moved, removed,
/// replaced or made, and the path may then lead somewhere else.
///
/// Every folder on the way is asked for its own moves. What happens among the entries of one, which
/// is what other programs do all the time, is asked for only near the end of the way.
class SettingsPath {
public:
    /// Watches the way as it is now; changes from then on are noticed. `folder` is an absolute path,
    /// whose last `own` folders nothing but the settings store uses.
    SettingsPath(const std::string& folder, std::size_t own);

    /// 0 when the folder is watched, or is missing and its appearance is watched; else the errno.
    /// `Place` is what it is about.
    int Error() const { return error_; }
    const std::string& Place() const { return place_; }

    /// Readable when there are events.
    int Descriptor() const { return events_.Get(); }

    struct Event {
        enum class Kind {
            kStored,      ///< an entry of the folder was closed by a writer, moved or removed
            kUnderWay,    ///< it was made or written to, and there may be more to come
            kPathChanged, ///< this watch is of no more use
            kOverflow,    ///< some events are lost
        };
        Kind kind;
        std::string entry; ///< its name
    };

    /// The events until now, in order. Never waits.
    std::vector<Event> Read();

private:
    /// A folder on the way, and the name that the way goes on with.
    struct Step {
        std::string folder;
        int watch;
        std::string next;
    };

    void Follow(const std::string& folder, std::size_t own);
    int Watch(const std::string& path, unsigned events);
    void Fail(const std::string& place, int error);
    bool AwaitAppearance();
    bool IsOnTheWay(int watch, const char* name) const;

    FileDescriptor events_;
    std::vector<Step> steps_;
    int folderWatch_ = -1;
    int error_ = 0;
    std::string place_;
};

} // namespace desktop
