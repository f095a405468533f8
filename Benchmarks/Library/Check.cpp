// The content check on the directories that are compiled in.

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <sys/stat.h>
#include <vector>

#include "Benchmarks/Library/ScheduleDocument.h"
#include "Benchmarks/Library/Work.h"
#include "Common/VQMConfig.h"
#include "Common/VQMSyncDemoMonitor.h"
#include "Data/VQMDataConstants.h"

namespace {

constexpr std::size_t kFileSize = 1;
constexpr char kMedia[] = VQM_MEDIA_DIR "/";
constexpr char kConstants[] = VQM_CONSTANTS_FILE;
constexpr char kSchedule[] = VQM_APPS_DIR "/" VQM_APP_ID "/RECH/schedule.xml";

std::string MediaFile(std::size_t item)
{
    return kMedia + ItemName(item) + ".mp4";
}

void Require(bool fulfilled, const char* what)
{
    if (!fulfilled) {
        throw std::runtime_error(what);
    }
}

/// Makes schedule and media unless an earlier run has left the same.
void Prepare(std::size_t items, std::size_t files)
{
    Require(std::filesystem::is_directory(kMedia), "run this in Scripts/sandbox --empty");
    const std::string document = ScheduleDocument(items, kFileSize, Layout::LineForItem, kItemsOfAPeriod, files);
    if (std::filesystem::exists(MediaFile(files - 1)) && !std::filesystem::exists(MediaFile(files)) &&
        std::filesystem::exists(kSchedule) && std::filesystem::file_size(kSchedule) == document.size()) {
        return;
    }
    for (const auto& old : std::filesystem::directory_iterator(kMedia)) {
        std::filesystem::remove(old.path());
    }
    for (std::size_t item = 0; item < files; ++item) {
        std::ofstream(MediaFile(item)) << 'x';
    }
    std::ofstream(kSchedule) << document;
}

/// The monitor with all that it looks for in place.
CVQMSyncDemoMonitor& PreparedMonitor(std::size_t items, std::size_t files)
{
    Prepare(items, files);
    std::ofstream(kConstants) << "<Constants><Data key='ScheduleFile' value='schedule.xml'/></Constants>";
    Require(CVQMDataConstants::Initialize(kConstants), "the constants were not read");
    return *CVQMSyncDemoMonitor::GetInstance();
}

void Parse(CVQMSyncDemoMonitor& monitor)
{
    _VQMPolicy policy;
    Require(monitor.ParseStoredSchedule(kSchedule, &policy), "the schedule was not read");
}

void Check(CVQMSyncDemoMonitor& monitor)
{
    monitor.CheckContents();
    Require(monitor.CheckHaveContents(), "a file is missing");
}

} // namespace

Work CheckFiles(std::size_t size)
{
    CVQMSyncDemoMonitor& monitor = PreparedMonitor(size, size);
    return {[&monitor] { Check(monitor); }, 1, [&monitor] { Parse(monitor); }};
}

Work CheckAll(std::size_t size)
{
    CVQMSyncDemoMonitor& monitor = PreparedMonitor(size, size);
    return {[&monitor] { Check(monitor); }};
}

Work CheckRepeated(std::size_t size)
{
    constexpr std::size_t kItemsOfAFile = 5;
    CVQMSyncDemoMonitor& monitor = PreparedMonitor(size, std::max<std::size_t>(size / kItemsOfAFile, 1));
    return {[&monitor] { Check(monitor); }};
}

Work CheckWithStat(std::size_t size)
{
    // After reading the schedule as well, for that leaves the processor's caches to neither.
    CVQMSyncDemoMonitor& monitor = PreparedMonitor(size, size);
    std::vector<std::string> paths;
    for (std::size_t item = 0; item < size; ++item) {
        paths.push_back(MediaFile(item));
    }
    return {[paths, &monitor] {
                Parse(monitor);
                for (const std::string& path : paths) {
                    struct stat status = {};
                    Require(stat(path.c_str(), &status) == 0 && status.st_size == kFileSize, "a file is missing");
                }
            },
            1, [&monitor] { Parse(monitor); }};
}

Work CheckWithFind(std::size_t size)
{
    Prepare(size, size);
    const std::string command = std::string("exec find ") + kMedia + " -size " + std::to_string(kFileSize) + "c";
    return {[=] {
        FILE* const find = popen(command.c_str(), "re");
        Require(find != nullptr, "find was not started");
        std::size_t lines = 0;
        char text[65536];
        for (std::size_t count = 0; (count = fread(text, 1, sizeof text, find)) > 0;) {
            lines += static_cast<std::size_t>(std::count(text, text + count, '\n'));
        }
        Require(pclose(find) == 0 && lines == size, "find found other files");
    }};
}
