#include "Tests/Support/Recorder.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include <dlog.h>

namespace recorder {

namespace {

std::mutex mutex;
Lines trace;
std::function<void(const std::string&)> lineListener;

char PriorityLetter(int priority)
{
    switch (priority) {
    case DLOG_DEBUG:
        return 'D';
    case DLOG_INFO:
        return 'I';
    case DLOG_WARN:
        return 'W';
    case DLOG_ERROR:
        return 'E';
    default:
        return '?';
    }
}

bool IsLogLine(const std::string& line)
{
    return line.size() > 1 && line[1] == '/';
}

} // namespace

void Record(std::string line)
{
    {
        const std::lock_guard<std::mutex> lock(mutex);
        trace.push_back(line);
    }
    if (lineListener) {
        lineListener(line);
    }
}

void SetListener(std::function<void(const std::string&)> listener)
{
    lineListener = std::move(listener);
}

Lines Trace()
{
    const std::lock_guard<std::mutex> lock(mutex);
    return trace;
}

Lines LogLines()
{
    Lines lines = Trace();
    lines.erase(std::remove_if(lines.begin(), lines.end(), [](const std::string& line) { return !IsLogLine(line); }),
                lines.end());
    return lines;
}

Lines Take()
{
    const std::lock_guard<std::mutex> lock(mutex);
    return std::exchange(trace, {});
}

void Clear()
{
    Take();
}

std::string Log(int priority, const char* tag, const std::string& file, const std::string& function,
                const std::string& message)
{
    return std::string(1, PriorityLetter(priority)) + '/' + (tag != nullptr ? tag : "(null)") + ' ' + file + ": " +
           function + " > " + message;
}

std::string LogOf::Debug(const std::string& function, const std::string& message) const
{
    return Log(DLOG_DEBUG, tag_, file_, function, message);
}

std::string LogOf::Error(const std::string& function, const std::string& message) const
{
    return Log(DLOG_ERROR, tag_, file_, function, message);
}

} // namespace recorder
