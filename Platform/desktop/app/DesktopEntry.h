#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace desktop {

/// A desktop entry's file as it stands on the disk. Two equal ones have the same content, unless
/// it was written again within one tick of the file system's clock.
struct EntryFile {
    std::string path;
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = 0;
    timespec modified{};
    timespec changed{};

    bool operator==(const EntryFile& other) const;
};

/// Looks for "<id>.desktop" where entries lie: "applications" in the user's data folder, then in
/// the system's. The folders are asked afresh each time, so an entry that comes, goes or moves is
/// noticed at once.
std::optional<EntryFile> FindEntryFile(std::string_view id);

/// Those folders in one text, for a message.
std::string EntryFolders();

/// What an entry says about starting its program.
struct DesktopEntry {
    bool hidden = false;                ///< to be treated as if it were not there
    std::vector<std::string> arguments; ///< the program first; no field codes left; never empty unless hidden
    std::string tryProgram;             ///< must exist, or the application counts as not installed; may be empty
    std::string workingFolder;          ///< empty: the starter's
};

/// Reads an entry. Nothing: it cannot be read or makes no sense, and `problem` says why.
std::optional<DesktopEntry> ReadEntry(const EntryFile& file, std::string& problem);

} // namespace desktop
