#include "Platform/desktop/base/LogSink.h"

#include <cerrno>
#include <climits>
#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include "Platform/desktop/base/StandardDescriptors.h"

namespace desktop {

namespace {

/// A pipe that reports room has room for this much, unless another writer is faster. A terminal does not
/// report how much room it has; a stopped one has none.
constexpr std::size_t kPiece = PIPE_BUF;

/// Keeps SIGPIPE from ending the program while it writes.
ssize_t WriteShielded(int pipe, std::string_view data)
{
    sigset_t brokenPipe;
    sigset_t before;
    sigemptyset(&brokenPipe);
    sigaddset(&brokenPipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &brokenPipe, &before);
    const ssize_t written = write(pipe, data.data(), data.size());
    const int error = errno;
    if (written == -1 && error == EPIPE && sigismember(&before, SIGPIPE) == 0) {
        // Takes the pending signal away, so that it does not arrive once it is unblocked.
        const timespec now{};
        while (sigtimedwait(&brokenPipe, nullptr, &now) == -1 && errno == EINTR) {
        }
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    errno = error;
    return written;
}

} // namespace

LogSink LogSink::For(int descriptor)
{
    struct stat status {};
    Kind kind = Kind::kPlain;
    if (fstat(descriptor, &status) == 0) {
        if (S_ISFIFO(status.st_mode)) {
            kind = Kind::kPipe;
        } else if (S_ISSOCK(status.st_mode)) {
            kind = Kind::kSocket;
        } else if (S_ISCHR(status.st_mode) && isatty(descriptor) == 1) {
            kind = Kind::kTerminal;
        }
    }
    if (kind == Kind::kPipe || kind == Kind::kTerminal) {
        platform::FileDescriptor again = OpenWithoutBlocking(descriptor);
        if (again.IsOpen()) {
            return {std::move(again), kind, false};
        }
    }
    // Never one of the standard numbers, which a program may close and open again.
    constexpr int kFirstOfOthers = STDERR_FILENO + 1;
    return {platform::FileDescriptor(fcntl(descriptor, F_DUPFD_CLOEXEC, kFirstOfOthers)), kind, true};
}

LogSink LogSink::ForSocket(platform::FileDescriptor socket)
{
    return {std::move(socket), Kind::kSocket, false};
}

ssize_t LogSink::Write(std::string_view data) const
{
    if (kind_ == Kind::kSocket) {
        // The flags hold for this call only: those of the socket belong to other processes too.
        return send(held_.Get(), data.data(), data.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    }
    if (mayBlock_ && kind_ != Kind::kPlain) {
        if (!HasRoom(std::chrono::milliseconds::zero())) {
            errno = EAGAIN;
            return -1;
        }
        data = data.substr(0, kPiece);
    }
    if (kind_ == Kind::kPipe) {
        return WriteShielded(held_.Get(), data);
    }
    return write(held_.Get(), data.data(), data.size());
}

bool LogSink::HasRoom(std::chrono::milliseconds timeout) const
{
    pollfd full{held_.Get(), POLLOUT, 0};
    return poll(&full, 1, static_cast<int>(timeout.count())) == 1;
}

void LogSink::WaitForRoom(std::chrono::milliseconds timeout) const
{
    HasRoom(timeout);
}

} // namespace desktop
