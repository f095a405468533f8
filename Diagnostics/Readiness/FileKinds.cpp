#include "Diagnostics/Readiness/FileKinds.h"

#include <cerrno>

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

} // namespace readiness
