#include "Platform/desktop/app/EntryFile.h"

#include <ctime>
#include <filesystem>
#include <glib.h>
#include <sys/stat.h>

#include "Platform/desktop/app/ProgramFolder.h"

namespace desktop {

namespace {

/// Longer than a tick of any file system's clock that counts in less than seconds.
constexpr long kClockTickNanoseconds = 20'000'000;

bool SameTime(const timespec& a, const timespec& b)
{
    return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

std::string EntriesIn(std::string_view dataFolder)
{
    std::string path(dataFolder);
    if (path.empty() || path.back() != '/') {
        path += '/';
    }
    return path + "applications";
}

/// The entries that were installed together with this program.
std::string OwnEntries()
{
    const std::filesystem::path folder = ProgramFolder();
    return folder.empty() ? "" : EntriesIn((folder / PLATFORM_DATA_FOLDER).lexically_normal().string());
}

template <typename Visit>
void ForEachFolder(Visit visit)
{
    static const std::string own = OwnEntries();
    bool ownVisited = own.empty();
    const auto visitData = [&](std::string_view dataFolder) {
        const std::string folder = EntriesIn(dataFolder);
        ownVisited = ownVisited || folder == own;
        visit(folder);
    };
    visitData(g_get_user_data_dir());
    for (const char* const* folder = g_get_system_data_dirs(); *folder != nullptr; ++folder) {
        visitData(*folder);
    }
    // Last, for an installation that the desktop does not know: a person's entry comes first, and the
    // desktop's.
    if (!ownVisited) {
        visit(own);
    }
}

} // namespace

bool EntryFile::operator==(const EntryFile& other) const
{
    return device == other.device && inode == other.inode && size == other.size && SameTime(modified, other.modified) &&
           SameTime(changed, other.changed) && path == other.path;
}

std::optional<EntryFile> FindEntryFile(std::string_view id)
{
    std::optional<EntryFile> found;
    std::string path;
    ForEachFolder([&](const std::string& folder) {
        if (found) {
            return;
        }
        path.assign(folder).append("/").append(id).append(".desktop");
        struct stat status {};
        if (stat(path.c_str(), &status) == 0) {
            found = EntryFile{path, status.st_dev, status.st_ino, status.st_size, status.st_mtim, status.st_ctim};
        }
    });
    return found;
}

std::string EntryFolders()
{
    std::string all;
    ForEachFolder([&all](const std::string& folder) { all.append(all.empty() ? "" : ", ").append(folder); });
    return all;
}

bool HasSettled(const EntryFile& file)
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    const long long age = (now.tv_sec - file.changed.tv_sec) * 1'000'000'000LL + (now.tv_nsec - file.changed.tv_nsec);
    return age > kClockTickNanoseconds;
}

} // namespace desktop
