#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>

namespace desktop {

/// A desktop entry's file as it stands on the disk. Two equal ones have the same content, unless
/// the file was written again within one tick of the file system's clock.
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
/// the system's, then in the one that was installed with this program. The folders are searched
/// each time, so an entry that comes, goes or moves is noticed at once.
std::optional<EntryFile> FindEntryFile(std::string_view id);

/// False for a file that was changed so recently that another change may leave its times equal.
bool HasSettled(const EntryFile& file);

/// Those folders in one text, for a message.
std::string EntryFolders();

} // namespace desktop
