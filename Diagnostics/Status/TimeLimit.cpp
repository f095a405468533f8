#include "Diagnostics/Status/TimeLimit.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/time.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "Platform/common/FileDescriptor.h"

namespace status {

namespace {

[[noreturn]] void ThrowErrno(const char* what)
{
    throw std::system_error(errno, std::generic_category(), what);
}

void EndThisProcessAfter(std::chrono::milliseconds limit)
{
    // The parent of this process may have ignored or blocked the signal, which is inherited.
    std::signal(SIGALRM, SIG_DFL);
    sigset_t alarm;
    sigemptyset(&alarm);
    sigaddset(&alarm, SIGALRM);
    sigprocmask(SIG_UNBLOCK, &alarm, nullptr);
    itimerval timer{};
    timer.it_value.tv_sec = static_cast<time_t>(limit.count() / 1000);
    timer.it_value.tv_usec = static_cast<suseconds_t>(limit.count() % 1000 * 1000);
    setitimer(ITIMER_REAL, &timer, nullptr);
}

bool WriteAll(int descriptor, std::string_view text)
{
    while (!text.empty()) {
        const ssize_t count = write(descriptor, text.data(), text.size());
        if (count < 0 && errno != EINTR) {
            return false;
        }
        text.remove_prefix(count < 0 ? 0 : static_cast<std::size_t>(count));
    }
    return true;
}

/// An answer is its length and its text, so that a text cut off is noticed.
using Length = std::uint64_t;

bool WriteAnswer(int descriptor, const std::string& text)
{
    const Length length = text.size();
    std::array<char, sizeof length> head;
    std::memcpy(head.data(), &length, sizeof length);
    return WriteAll(descriptor, std::string_view(head.data(), head.size())) && WriteAll(descriptor, text);
}

std::optional<std::string> ReadAnswer(int descriptor)
{
    std::string received;
    std::array<char, 4096> part;
    for (;;) {
        const ssize_t count = read(descriptor, part.data(), part.size());
        if (count > 0) {
            received.append(part.data(), static_cast<std::size_t>(count));
        } else if (count == 0 || errno != EINTR) {
            break;
        }
    }
    Length length = 0;
    if (received.size() < sizeof length) {
        return std::nullopt;
    }
    std::memcpy(&length, received.data(), sizeof length);
    received.erase(0, sizeof length);
    return received.size() == length ? std::optional(std::move(received)) : std::nullopt;
}

[[noreturn]] void Answer(int descriptor, std::chrono::milliseconds limit, const std::function<std::string()>& question)
{
    EndThisProcessAfter(limit);
    try {
        WriteAnswer(descriptor, question());
    } catch (...) { // NOLINT(bugprone-empty-catch): the missing answer says enough
    }
    _exit(0); // without exit handlers, which belong to the parent
}

} // namespace

std::optional<std::string> AskWithin(std::chrono::milliseconds limit, const std::function<std::string()>& question)
{
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC) == -1) {
        ThrowErrno("pipe");
    }
    const platform::FileDescriptor readEnd(ends[0]);
    pid_t child = -1;
    {
        const platform::FileDescriptor writeEnd(ends[1]);
        child = fork();
        if (child == 0) {
            Answer(writeEnd.Get(), limit, question);
        }
        if (child == -1) {
            ThrowErrno("fork");
        }
    }
    // The child's end of the pipe closes with the child at the latest.
    std::optional<std::string> answer = ReadAnswer(readEnd.Get());
    // How the child ended does not matter. It is not even known where SIGCHLD is ignored, which this process may
    // have inherited.
    while (waitpid(child, nullptr, 0) == -1 && errno == EINTR) {
    }
    return answer;
}

} // namespace status
