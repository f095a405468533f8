#include "Platform/desktop/bus/PopupRecord.h"

#include <array>
#include <charconv>
#include <cstdlib>
#include <fcntl.h>
#include <string_view>
#include <unistd.h>

#include "Platform/common/FileDescriptor.h"
#include "Platform/common/ReplaceFile.h"

namespace desktop {

namespace {

constexpr std::string_view kInhibited = "inhibited";
constexpr std::string_view kPaused = "paused";
constexpr std::string_view kRunning = "running";

/// Longer than any record; the rest is ignored.
constexpr std::size_t kLongestRecord = 1024;

void TakeLine(PopupRecord& record, std::string_view line)
{
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos) {
        return;
    }
    const std::string_view name = line.substr(0, equals);
    const std::string_view value = line.substr(equals + 1);
    if (name == "pid") {
        std::from_chars(value.data(), value.data() + value.size(), record.pid);
    } else if (name == "bus") {
        record.bus = value;
    } else if (name == "daemon") {
        record.daemon = value;
    } else if (name == "how") {
        record.inhibited = value == kInhibited;
    } else if (name == "before") {
        record.pausedBefore = value == kPaused;
    }
}

} // namespace

std::string PopupRecordFile(const std::string& applicationId)
{
    const char* folder = std::getenv("XDG_RUNTIME_DIR");
    return folder != nullptr && folder[0] == '/' ? std::string(folder) + "/" + applicationId + ".popups" : "";
}

std::optional<PopupRecord> ReadPopupRecord(const std::string& path)
{
    // Without waiting and without following links: other programs can put anything in the file's place.
    const platform::FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW));
    std::array<char, kLongestRecord> buffer;
    const ssize_t size = file.IsOpen() ? read(file.Get(), buffer.data(), buffer.size()) : -1;
    if (size <= 0) {
        return std::nullopt;
    }
    PopupRecord record;
    std::string_view rest(buffer.data(), static_cast<std::size_t>(size));
    while (!rest.empty()) {
        const std::size_t end = rest.find('\n');
        TakeLine(record, rest.substr(0, end));
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    }
    return record;
}

Result<void> WritePopupRecord(const std::string& path, const PopupRecord& record)
{
    if (path.empty()) {
        return Error{"XDG_RUNTIME_DIR holds no absolute path"};
    }
    std::string text;
    text.append("pid=").append(std::to_string(record.pid));
    text.append("\nbus=").append(record.bus);
    text.append("\ndaemon=").append(record.daemon);
    text.append("\nhow=").append(record.inhibited ? kInhibited : kPaused);
    text.append("\nbefore=").append(record.pausedBefore ? kPaused : kRunning).append("\n");
    return platform::ReplaceFile(path, text);
}

void RemovePopupRecord(const std::string& path)
{
    unlink(path.c_str());
}

} // namespace desktop
