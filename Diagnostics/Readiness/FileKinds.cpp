#include "Diagnostics/Readiness/FileKinds.h"

#include <cerrno>
#include <filesystem>
#include <system_error>

#include <sys/stat.h>

namespace readiness {

bool IsAbsence(int error)
{
    return error == ENOENT || error == ENOTDIR;
}

const char* KindName(mode_t mode)
{
    switch (mode & S_IFMT) {
    case S_IFDIR:
        return "a directory";
    case S_IFIFO:
        return "a pipe";
    case S_IFSOCK:
        return "a socket";
    case S_IFCHR:
    case S_IFBLK:
        return "a device";
    default:
        return "a file";
    }
}

std::string DanglingLink(const std::string& path)
{
    std::error_code error;
    const std::filesystem::path target = std::filesystem::read_symlink(path, error);
    return error ? "" : ": it is a link to '" + target.string() + "', which is not there";
}

} // namespace readiness
