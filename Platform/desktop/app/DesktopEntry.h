#pragma once

#include <string>
#include <vector>

#include "Platform/desktop/app/EntryFile.h"
#include "Platform/desktop/base/Result.h"

namespace desktop {

/// The part of an entry that is about starting its program.
struct DesktopEntry {
    bool hidden = false;                ///< the entry counts as missing
    std::vector<std::string> arguments; ///< the program first; no field codes left; never empty unless hidden
    std::string tryProgram;             ///< must exist, or the application counts as not installed; may be empty
    std::string workingFolder;          ///< empty: the starter's
};

/// Reads an entry. The error says why it cannot be read or used.
Result<DesktopEntry> ReadEntry(const EntryFile& file);

/// The desktop entry that was asked for last. It is parsed when its file is new or has changed, not
/// each time. One thread.
class EntryCache {
public:
    struct Entry {
        std::string path;
        DesktopEntry content;
        std::string program; ///< where the last launch found the entry's program; empty: nowhere
    };

    /// The entry in this file, valid until the next call. The error says why it cannot be used.
    Result<Entry*> Get(const EntryFile& file);

private:
    EntryFile file_; ///< of `entry_`
    bool settled_ = false;
    Entry entry_;
};

} // namespace desktop
