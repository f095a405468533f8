#include "Platform/desktop/base/StandardDescriptors.h"

#include <cerrno>
#include <fcntl.h>
#include <string>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

namespace desktop {

void OpenStandardDescriptors()
{
    // `open` gives the lowest free number. That is the current descriptor's, because those below are open.
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (fcntl(descriptor, F_GETFD) == -1 && errno == EBADF) {
            const int wrongWay = descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY;
            if (open("/dev/null", wrongWay) == -1) {
                open("/", O_PATH); // without a /dev: can neither be read nor written
            }
        }
    }
}

platform::FileDescriptor OpenWithoutBlocking(int descriptor)
{
    const std::string path = "/proc/self/fd/" + std::to_string(descriptor);
    return platform::FileDescriptor(open(path.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
}

void KeepStandardErrorFromBlocking()
{
    struct stat status {};
    if (fstat(STDERR_FILENO, &status) == -1) {
        return;
    }
    if (S_ISSOCK(status.st_mode)) {
        // A socket cannot be opened again. A time limit for writing has no effect while there is room.
        constexpr timeval kLimit{0, 100'000};
        setsockopt(STDERR_FILENO, SOL_SOCKET, SO_SNDTIMEO, &kLimit, sizeof kLimit);
    } else if (S_ISFIFO(status.st_mode) || isatty(STDERR_FILENO) == 1) {
        const platform::FileDescriptor again = OpenWithoutBlocking(STDERR_FILENO);
        if (again.IsOpen()) {
            dup2(again.Get(), STDERR_FILENO);
        }
    }
}

} // namespace desktop
