#pragma once

#include <string>

#include "Platform/desktop/app/DesktopEntry.h"
#include "Platform/desktop/app/EntryFile.h"
#include "Platform/desktop/base/Result.h"

namespace desktop {

/// The desktop entry that was asked for last. It is parsed when its file is new or has changed, not
/// each time. One thread.
class EntryCache {
public:
    struct Entry {
        std::string path;
        DesktopEntry content;
        std::string program; ///< where a launch found the entry's program last; empty: nowhere
    };

    /// The entry in this file, valid until the next call. The problem says why it cannot be used.
    Result<Entry*> Get(const EntryFile& file);

private:
    EntryFile file_; ///< of `entry_`
    bool settled_ = false;
    Entry entry_;
};

} // namespace desktop
