#include "Platform/desktop/base/LogOutput.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dlog.h>
#include <glib.h>
#include <optional>
#include <poll.h>
#include <unistd.h>

namespace desktop {

namespace {

/// How long a full stderr may hold the program up before its line is dropped.
constexpr int kFullOutputMilliseconds = 100;

/// Keeps SIGPIPE from ending the program while it writes. Where stderr can be positioned it is
/// neither pipe nor socket, and the signal cannot come: asking is cheaper than keeping it off.
/// Asked anew for each line, since a program may put something else in the place of its stderr.
class BrokenPipeShield {
public:
    BrokenPipeShield() : needed_(lseek(STDERR_FILENO, 0, SEEK_CUR) == -1)
    {
        if (!needed_) {
            return;
        }
        sigemptyset(&brokenPipe_);
        sigaddset(&brokenPipe_, SIGPIPE);
        pthread_sigmask(SIG_BLOCK, &brokenPipe_, &before_);
    }
    BrokenPipeShield(const BrokenPipeShield&) = delete;
    BrokenPipeShield& operator=(const BrokenPipeShield&) = delete;
    ~BrokenPipeShield()
    {
        if (!needed_) {
            return;
        }
        if (broken_ && sigismember(&before_, SIGPIPE) == 0) {
            const timespec now{};
            while (sigtimedwait(&brokenPipe_, nullptr, &now) == -1 && errno == EINTR) {
            }
        }
        pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    }
    void SawBrokenPipe() { broken_ = true; }

private:
    const bool needed_;
    sigset_t brokenPipe_{};
    sigset_t before_{};
    bool broken_ = false;
};

/// Where a message comes from, read off its prefix.
struct SourcePlace {
    std::string_view file;
    std::string_view function;
    std::string_view line;
};

std::optional<SourcePlace> PlaceOf(std::string_view message)
{
    const std::size_t end = message.find(") > ");
    const std::size_t fileEnd = message.find(": ");
    if (end == std::string_view::npos || fileEnd == std::string_view::npos || fileEnd > end) {
        return std::nullopt;
    }
    const std::size_t functionAt = fileEnd + 2;
    const std::size_t open = message.rfind('(', end);
    if (open == std::string_view::npos || open < functionAt) {
        return std::nullopt;
    }
    const SourcePlace place{message.substr(0, fileEnd), message.substr(functionAt, open - functionAt),
                            message.substr(open + 1, end - open - 1)};
    const bool number = !place.line.empty() && place.line.find_first_not_of("0123456789") == std::string_view::npos;
    return number ? std::optional(place) : std::nullopt;
}

const char* SyslogPriority(int priority)
{
    switch (priority) {
    case DLOG_INFO:
        return "6";
    case DLOG_WARN:
        return "4";
    case DLOG_ERROR:
        return "3";
    case DLOG_FATAL:
        return "2";
    default:
        return "7";
    }
}

GLogField Field(const char* key, std::string_view value)
{
    return {key, value.data(), static_cast<gssize>(value.size())};
}

} // namespace

bool WriteToStandardError(std::string_view data)
{
    BrokenPipeShield shield;
    while (!data.empty()) {
        const ssize_t written = write(STDERR_FILENO, data.data(), data.size());
        if (written >= 0) {
            data.remove_prefix(static_cast<std::size_t>(written));
            continue;
        }
        if (errno == EINTR) {
            continue;
        }
        if (errno == EAGAIN) {
            pollfd full{STDERR_FILENO, POLLOUT, 0};
            if (poll(&full, 1, kFullOutputMilliseconds) == 1 || errno == EINTR) {
                continue;
            }
        } else if (errno == EPIPE) {
            shield.SawBrokenPipe();
        }
        return false;
    }
    return true;
}

bool StandardErrorHasColours()
{
    static const bool colours = [] {
        const char* noColor = std::getenv("NO_COLOR");
        const char* terminal = std::getenv("TERM");
        const bool refused = noColor != nullptr && *noColor != '\0';
        const bool capable = terminal != nullptr && std::strcmp(terminal, "dumb") != 0;
        return !refused && capable && isatty(STDERR_FILENO) == 1;
    }();
    return colours;
}

bool StandardErrorIsJournal()
{
    static const bool journal = g_log_writer_is_journald(STDERR_FILENO) != FALSE;
    return journal;
}

bool WriteToJournal(int priority, std::string_view tag, std::string_view message)
{
    std::array<GLogField, 6> fields{};
    std::size_t count = 0;
    fields[count++] = Field("MESSAGE", message);
    fields[count++] = Field("PRIORITY", SyslogPriority(priority));
    fields[count++] = Field("SYSLOG_IDENTIFIER", tag);
    if (const auto place = PlaceOf(message)) {
        fields[count++] = Field("CODE_FILE", place->file);
        fields[count++] = Field("CODE_FUNC", place->function);
        fields[count++] = Field("CODE_LINE", place->line);
    }
    return g_log_writer_journald(G_LOG_LEVEL_MESSAGE, fields.data(), count, nullptr) == G_LOG_WRITER_HANDLED;
}

} // namespace desktop
