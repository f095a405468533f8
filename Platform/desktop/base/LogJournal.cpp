#include "Platform/desktop/base/LogJournal.h"

#include <cstring>
#include <dlog.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <utility>

namespace desktop {

namespace {

constexpr char kStreamSocket[] = "/run/systemd/journal/stdout";
constexpr char kEntrySocket[] = "/run/systemd/journal/socket";

/// The place in the source that a message's prefix names.
struct SourcePlace {
    std::string_view file;
    std::string_view function;
    std::string_view line;
};

/// Reads the prefix of a message such as "main.cpp: elm_main(107) > text"; none where there is no prefix.
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

/// The journal's simple form of a field, for values without a line end: they are escaped before.
void AppendField(std::string& entry, const char* name, std::string_view value)
{
    entry.append(name).append("=").append(value).append("\n");
}

} // namespace

bool IsJournal(int descriptor)
{
    sockaddr_un peer{};
    socklen_t size = sizeof peer;
    // The comparison includes the terminator, which `peer` has even where the kernel does not count it.
    return getpeername(descriptor, reinterpret_cast<sockaddr*>(&peer), &size) == 0 && peer.sun_family == AF_UNIX &&
           size >= offsetof(sockaddr_un, sun_path) + sizeof kStreamSocket - 1 &&
           std::memcmp(peer.sun_path, kStreamSocket, sizeof kStreamSocket) == 0;
}

std::optional<LogSink> ConnectToJournal()
{
    platform::FileDescriptor sender(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, kEntrySocket, sizeof kEntrySocket);
    if (!sender.IsOpen() || connect(sender.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == -1) {
        return std::nullopt;
    }
    return LogSink::ForSocket(std::move(sender));
}

std::string JournalEntry(int priority, std::string_view tag, std::string_view message)
{
    std::string entry;
    entry.reserve(message.size() + 256);
    AppendField(entry, "MESSAGE", message);
    AppendField(entry, "PRIORITY", SyslogPriority(priority));
    AppendField(entry, "SYSLOG_IDENTIFIER", tag);
    if (const auto place = PlaceOf(message)) {
        AppendField(entry, "CODE_FILE", place->file);
        AppendField(entry, "CODE_FUNC", place->function);
        AppendField(entry, "CODE_LINE", place->line);
    }
    return entry;
}

} // namespace desktop
