#include "Platform/desktop/base/LogOutput.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <optional>
#include <unistd.h>
#include <utility>

#include "Platform/desktop/base/LogJournal.h"
#include "Platform/desktop/base/LogSink.h"
#include "Platform/desktop/base/StandardDescriptors.h"

namespace desktop {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

/// Of one line.
constexpr milliseconds kLongestWait{100};
/// Of all lines together; a twentieth of the time that passes is added.
constexpr milliseconds kTotalWait{1000};
constexpr int kShareOfTime = 20;
/// After a dropped line, before the next one is tried.
constexpr std::chrono::seconds kPause{1};

/// The time that lines may still wait.
class WaitingTime {
public:
    /// The longest that the next line may wait; zero or less when the time is used up.
    milliseconds MayWait()
    {
        const Clock::time_point now = Clock::now();
        left_ = std::min<Clock::duration>(kTotalWait, left_ + (now - earnedUntil_) / kShareOfTime);
        earnedUntil_ = now;
        return std::min(kLongestWait, std::chrono::duration_cast<milliseconds>(left_));
    }
    /// A wait that ends at once costs something too: otherwise such waits could go on for ever.
    void Spend(Clock::duration waited) { left_ -= std::max<Clock::duration>(waited, milliseconds(1)); }

private:
    Clock::duration left_ = kTotalWait;
    Clock::time_point earnedUntil_ = Clock::now();
};

/// Counts the lines that found no room.
class DroppedLines {
public:
    void Count()
    {
        resumeAt_ = (Clock::now() + kPause).time_since_epoch().count();
        ++count_;
    }
    bool Any() const { return count_.load(std::memory_order_relaxed) != 0; }
    bool IsPause() const { return Any() && Clock::now().time_since_epoch().count() < resumeAt_; }
    /// A line that is dropped during the pause does not prolong it.
    void CountInPause() { ++count_; }
    unsigned long long Take() { return count_.exchange(0); }
    void PutBack(unsigned long long lines) { count_ += lines; }

private:
    std::atomic<unsigned long long> count_{0};
    std::atomic<Clock::rep> resumeAt_{0};
};

DroppedLines dropped;
std::atomic<bool> lineIsCut{false};

bool WantsColours()
{
    const char* noColor = std::getenv("NO_COLOR");
    const char* terminal = std::getenv("TERM");
    const bool refused = noColor != nullptr && *noColor != '\0';
    const bool capable = terminal != nullptr && std::strcmp(terminal, "dumb") != 0;
    return !refused && capable && isatty(STDERR_FILENO) == 1;
}

struct StandardError {
    LogSink lines = LogSink::For(STDERR_FILENO);
    bool colours = WantsColours();
    bool journal = IsJournal(STDERR_FILENO);
    std::mutex journalMutex; ///< guards `entries`
    std::optional<LogSink> entries;
};

/// Never destroyed, because destructors log too.
std::unique_ptr<StandardError>& Current()
{
    static auto* current = [] {
        OpenStandardDescriptors();
        return new std::unique_ptr<StandardError>(new StandardError);
    }();
    return *current;
}

/// Returns false when the line must be dropped: no waiting time is left, or waiting made no room.
bool WaitForRoom(const LogSink& sink)
{
    static std::mutex mutex;
    static WaitingTime time;
    const std::lock_guard lock(mutex);
    if (dropped.Any()) {
        return false; // another line has already waited in vain
    }
    const milliseconds most = time.MayWait();
    if (most <= milliseconds::zero()) {
        return false;
    }
    const Clock::time_point begin = Clock::now();
    sink.WaitForRoom(most);
    const Clock::duration waited = Clock::now() - begin;
    time.Spend(waited);
    return waited < most;
}

/// Returns 0 or the errno, and not a `Result`: a line that fails must not take memory.
int WriteWhole(const LogSink& sink, std::string_view data)
{
    const std::size_t whole = data.size();
    while (!data.empty()) {
        const ssize_t written = sink.Write(data);
        if (written >= 0) {
            data.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno != EINTR && !(errno == EAGAIN && WaitForRoom(sink))) {
            const int error = errno;
            if (data.size() < whole) {
                lineIsCut = true;
            }
            return error;
        }
    }
    return 0;
}

} // namespace

bool WriteToStandardError(std::string_view line)
{
    if (dropped.IsPause()) {
        dropped.CountInPause();
        return false;
    }
    const LogSink& sink = Current()->lines;
    if (lineIsCut.load(std::memory_order_relaxed) && WriteWhole(sink, "\n") == 0) {
        lineIsCut = false;
    }
    if (WriteWhole(sink, line) != 0) {
        dropped.Count();
        return false;
    }
    return true;
}

bool StandardErrorHasColours()
{
    return Current()->colours;
}

bool StandardErrorIsJournal()
{
    return Current()->journal;
}

JournalAnswer WriteToJournal(int priority, std::string_view tag, std::string_view message)
{
    if (dropped.IsPause()) {
        dropped.CountInPause();
        return JournalAnswer::kDropped;
    }
    const std::string entry = JournalEntry(priority, tag, message);
    StandardError& standardError = *Current();
    const std::lock_guard lock(standardError.journalMutex);
    // A restarted journal has a new socket, so a failed attempt is repeated once.
    for (int attempt = 0; attempt < 2; ++attempt) {
        if (!standardError.entries) {
            standardError.entries = ConnectToJournal();
        }
        const int error = standardError.entries ? WriteWhole(*standardError.entries, entry) : ENOTCONN;
        if (error == 0) {
            return JournalAnswer::kTaken;
        }
        if (error == EAGAIN) {
            dropped.Count();
            return JournalAnswer::kDropped;
        }
        if (error == EMSGSIZE || error == ENOBUFS) {
            break; // too large for one datagram: the stream takes it as a line
        }
        standardError.entries.reset();
    }
    return JournalAnswer::kRefused;
}

unsigned long long TakeDroppedLines()
{
    return dropped.Any() && !dropped.IsPause() ? dropped.Take() : 0;
}

void PutBackDroppedLines(unsigned long long lines)
{
    dropped.PutBack(lines);
}

void ExamineStandardError()
{
    Current() = std::make_unique<StandardError>();
}

} // namespace desktop
