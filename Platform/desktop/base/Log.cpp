#include <dlog.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <pthread.h>
#include <string>
#include <string_view>
#include <unistd.h>

#include "Platform/common/VisibleText.h"
#include "Platform/desktop/base/LogOutput.h"
#include "Platform/desktop/base/PlatformLog.h"

namespace desktop {

namespace {

/// No priority is below it, so the first line gets as far as `ReadThreshold`.
constexpr int kThresholdUnread = std::numeric_limits<int>::min();
std::atomic<int> threshold{kThresholdUnread};

bool IsBelowThreshold(int priority)
{
    return priority < threshold.load(std::memory_order_relaxed);
}

struct NamedLevel {
    const char* name;
    int level;
};

constexpr int kNothing = std::numeric_limits<int>::max();

constexpr NamedLevel kLevels[] = {
    {"debug", DLOG_DEBUG}, {"info", DLOG_INFO}, {"warn", DLOG_WARN}, {"error", DLOG_ERROR}, {"silent", kNothing},
};

/// Called for the process's first line; later ones find the result.
void ReadThreshold()
{
    const char* wanted = std::getenv("DLOG_LEVEL");
    int level = DLOG_DEBUG;
    bool known = wanted == nullptr;
    for (const NamedLevel& candidate : kLevels) {
        if (wanted != nullptr && std::strcmp(wanted, candidate.name) == 0) {
            level = candidate.level;
            known = true;
        }
    }
    int unread = kThresholdUnread;
    if (threshold.compare_exchange_strong(unread, level) && !known) {
        PLATFORM_LOG(DLOG_WARN, "DLOG_LEVEL is \"%s\"; expected debug, info, warn, error or silent: taking debug",
                     wanted);
    }
}

/// This process's id, cached because `getpid` is a system call. A forked child asks again.
int OwnProcess()
{
    static std::atomic<int> kept{0};
    static const int watched = pthread_atfork(nullptr, nullptr, [] { kept = 0; });
    int process = kept.load(std::memory_order_relaxed);
    if (process == 0 || watched != 0) {
        process = static_cast<int>(getpid());
        kept = process;
    }
    return process;
}

/// A negative priority wraps around to an index beyond the letters.
char Letter(int priority)
{
    constexpr std::string_view kLetters = "??VDIWEF";
    const auto index = static_cast<std::size_t>(priority);
    return index < kLetters.size() ? kLetters[index] : '?';
}

std::string_view Colour(int priority)
{
    switch (priority) {
    case DLOG_INFO:
        return "\x1b[32m";
    case DLOG_WARN:
        return "\x1b[33m";
    case DLOG_ERROR:
    case DLOG_FATAL:
        return "\x1b[31m";
    default:
        return "\x1b[2m";
    }
}

constexpr std::string_view kColoursOff = "\x1b[0m";

/// A line under construction: the head, "D/Tag( 1234): ", directly followed by the message.
class Line {
public:
    Line(int priority, const char* tag) : priority_(priority), tag_(tag, strnlen(tag, kLongestTag))
    {
        const char start[] = {Letter(priority), '/'};
        AppendToHead(std::string_view(start, sizeof start));
        AppendToHead(tag_);
        AppendProcess();
    }

    /// False when the message does not fit into the usual buffer; call `FormatWhole` then.
    bool Format(const char* format, va_list arguments) __attribute__((format(printf, 2, 0)))
    {
        const std::size_t room = usual_.size() - head_;
        const int length = std::vsnprintf(usual_.data() + head_, room, format, arguments);
        if (length < 0) {
            TakeUnformatted(format);
            return true;
        }
        size_ = static_cast<std::size_t>(length);
        return size_ < room;
    }

    void FormatWhole(const char* format, va_list arguments) __attribute__((format(printf, 2, 0)))
    {
        MakeWhole();
        std::vsnprintf(whole_.get() + head_, size_ + 1, format, arguments);
    }

    int Write()
    {
        DropLineEnd();
        if (platform::NeedsEscape(std::string_view(Data(), head_ + size_)) || StandardErrorHasColours()) {
            return WriteRemade();
        }
        if (const auto result = WriteEntry(tag_, Message())) {
            return *result;
        }
        Data()[head_ + size_] = '\n'; // replaces the terminator, so that one write is enough
        return WriteLine(std::string_view(Data(), head_ + size_ + 1));
    }

private:
    static constexpr std::size_t kUsualLine = 512;
    static constexpr std::size_t kLongestTag = 100;

    /// "( 1234): "
    void AppendProcess()
    {
        constexpr std::size_t kWidth = 5;
        char digits[16];
        const char* const end = std::to_chars(digits, digits + sizeof digits, OwnProcess()).ptr;
        const std::string_view number(digits, static_cast<std::size_t>(end - digits));
        AppendToHead("(");
        for (std::size_t i = number.size(); i < kWidth; ++i) {
            AppendToHead(" ");
        }
        AppendToHead(number);
        AppendToHead("): ");
    }

    void AppendToHead(std::string_view part)
    {
        std::memcpy(usual_.data() + head_, part.data(), part.size());
        head_ += part.size();
    }

    char* Data() { return whole_ != nullptr ? whole_.get() : usual_.data(); }
    std::string_view Head() { return {Data(), head_}; }
    std::string_view Message() { return {Data() + head_, size_}; }

    void MakeWhole()
    {
        whole_ = std::make_unique<char[]>(head_ + size_ + 1);
        std::memcpy(whole_.get(), usual_.data(), head_);
    }

    /// Logs the format itself when it cannot be formatted.
    void TakeUnformatted(const char* format)
    {
        size_ = std::strlen(format);
        MakeWhole();
        std::memcpy(whole_.get() + head_, format, size_);
    }

    void DropLineEnd()
    {
        if (size_ > 0 && Message().back() == '\n') {
            --size_;
        }
        if (size_ > 0 && Message().back() == '\r') {
            --size_;
        }
    }

    /// Writes the line with escapes or colours.
    int WriteRemade()
    {
        const std::string message = platform::Escape(Message());
        if (const auto result = WriteEntry(platform::Escape(tag_), message)) {
            return *result;
        }
        std::string line = platform::Escape(Head()) + message;
        if (StandardErrorHasColours()) {
            line.insert(0, Colour(priority_)).append(kColoursOff);
        }
        line += '\n';
        return WriteLine(line);
    }

    /// None: the message must be written as a line.
    std::optional<int> WriteEntry(std::string_view tag, std::string_view message) const
    {
        const JournalAnswer answer =
            StandardErrorIsJournal() ? WriteToJournal(priority_, tag, message) : JournalAnswer::kRefused;
        if (answer == JournalAnswer::kRefused) {
            return std::nullopt;
        }
        return answer == JournalAnswer::kTaken ? static_cast<int>(message.size()) : -1;
    }

    static int WriteLine(std::string_view line)
    {
        return WriteToStandardError(line) ? static_cast<int>(line.size()) : -1;
    }

    int priority_;
    std::string_view tag_;
    std::array<char, kUsualLine> usual_;
    std::unique_ptr<char[]> whole_;
    std::size_t head_ = 0;
    std::size_t size_ = 0; ///< of the message
};

/// Logs, before the next line, how many lines are missing. `dlog_print` comes back here and finds no more
/// lines to report.
void TellDroppedLines()
{
    const unsigned long long lines = TakeDroppedLines();
    if (lines != 0 &&
        dlog_print(DLOG_ERROR, kPlatformTag, "%s: %s(%d) > %llu lines dropped: stderr had no room for them",
                   __FILE_NAME__, __func__, __LINE__, lines) < 0) {
        PutBackDroppedLines(lines - 1); // this line is now counted as dropped too
    }
}

/// Not inlined, so that the path of a line below the threshold stays short.
[[gnu::noinline]] __attribute__((format(printf, 3, 0))) int Print(int priority, const char* tag, const char* format,
                                                                  va_list arguments)
{
    if (threshold.load(std::memory_order_relaxed) == kThresholdUnread) {
        ReadThreshold();
        if (IsBelowThreshold(priority)) {
            return 0;
        }
    }
    const int savedErrno = errno;
    int result = -1;
    try {
        TellDroppedLines();
        Line line(priority, tag != nullptr ? tag : "");
        va_list again;
        va_copy(again, arguments);
        errno = savedErrno; // the format may contain %m
        if (!line.Format(format, arguments)) {
            errno = savedErrno;
            line.FormatWhole(format, again);
        }
        va_end(again);
        result = line.Write();
    } catch (const std::bad_alloc&) {
        result = -1; // only the line is lost
    }
    errno = savedErrno;
    return result;
}

} // namespace

} // namespace desktop

int dlog_print(log_priority prio, const char* tag, const char* fmt, ...)
{
    if (desktop::IsBelowThreshold(prio)) {
        return 0;
    }
    va_list arguments;
    va_start(arguments, fmt);
    const int result = desktop::Print(prio, tag, fmt, arguments);
    va_end(arguments);
    return result;
}
