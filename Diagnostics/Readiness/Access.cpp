#include "Diagnostics/Readiness/Access.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>

#include <sys/stat.h>
#include <unistd.h>

namespace readiness {

namespace {

bool IsClosed(const std::string& directory)
{
    // For the effective user, as the library opens files; `access` would ask for the real one.
    return faccessat(AT_FDCWD, directory.c_str(), X_OK, AT_EACCESS) != 0 && errno == EACCES;
}

bool IsOpenToAll(const std::string& path)
{
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0) {
        return true; // its own mode is not the reason
    }
    const mode_t needed = S_ISDIR(status.st_mode) ? S_IXOTH : S_IROTH;
    return (status.st_mode & needed) != 0;
}

} // namespace

std::string ClosedFolder(const std::string& path)
{
    std::filesystem::path place;
    for (const std::filesystem::path& part : std::filesystem::path(path).parent_path()) {
        place /= part;
        if (IsClosed(place.string())) {
            return place.string();
        }
    }
    return "";
}

std::string ClosedToOthers(const std::string& root, const std::string& path)
{
    std::filesystem::path place = root.empty() ? "/" : root;
    for (const std::filesystem::path& part : std::filesystem::path(path.substr(root.size())).relative_path()) {
        place /= part;
        if (!part.empty() && !IsOpenToAll(place.string())) {
            return place.string();
        }
    }
    return "";
}

} // namespace readiness
