#include "Diagnostics/Readiness/Contents.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <filesystem>
#include <future>
#include <limits>
#include <map>
#include <numeric>
#include <set>
#include <string_view>
#include <system_error>
#include <unordered_map>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include "Diagnostics/Readiness/Access.h"
#include "Diagnostics/Readiness/Background.h"
#include "Diagnostics/Readiness/FileKinds.h"
#include "Diagnostics/Readiness/MissingFile.h"
#include "VQMPipe/VQMFilePipe.h"

namespace readiness {

namespace {

/// The number of files that a thread takes at a time. Progress is reported after each such step.
constexpr std::size_t kFilesOfAStep = 64;

uVQMINT64 AddUpTo(uVQMINT64 left, uVQMINT64 right)
{
    uVQMINT64 sum = 0;
    return __builtin_add_overflow(left, right, &sum) ? std::numeric_limits<uVQMINT64>::max() : sum;
}

/// Whether the file can be opened and gives its first byte, if it has one. Never waits for one.
bool TryToRead(const std::string& place, ContentFile& file)
{
    const int descriptor = open(place.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0) {
        file.problem = std::generic_category().message(errno);
        return false;
    }
    char byte = 0;
    const ssize_t count = pread(descriptor, &byte, 1, 0);
    if (count < 0) {
        file.problem = std::generic_category().message(errno);
    }
    close(descriptor);
    return count >= 0;
}

void ExamineFile(const FileTree& tree, const std::string& directory, CVQMFilePipe& pipe, ContentFile& file)
{
    const std::string path = directory + file.name;
    const std::string place = tree.Locate(path);
    // The library's own measure, because its check goes by it. `stat` only explains.
    file.size = pipe.GetFileSize(place.c_str());
    struct stat status = {};
    if (stat(place.c_str(), &status) != 0) {
        const int error = errno;
        if (IsAbsence(error)) {
            file.kind = FileKind::kMissing;
            file.problem = "is missing" + WhyMissing(path, tree);
        } else {
            file.kind = FileKind::kNotExamined;
            file.problem = std::generic_category().message(error);
        }
    } else if (S_ISREG(status.st_mode)) {
        file.kind = FileKind::kFile;
        file.readable = TryToRead(place, file);
    } else {
        file.kind = S_ISDIR(status.st_mode) ? FileKind::kDirectory : FileKind::kOther;
        file.problem = std::string("is ") + KindName(status.st_mode);
    }
}

/// How many bytes are still to be copied. The part of a file that is there needs no room again; a file of
/// several items counts once, with the largest size.
uVQMINT64 BytesToCopy(const Contents& contents)
{
    std::vector<uVQMINT64> lacking(contents.files.size());
    for (const ContentItem& item : contents.items) {
        const uVQMINT64 present = contents.FileOf(item).size;
        if (item.announced > present) {
            lacking[item.file] = std::max(lacking[item.file], item.announced - present);
        }
    }
    return std::accumulate(lacking.begin(), lacking.end(), uVQMINT64{0}, AddUpTo);
}

/// Of the disk that holds the directory. One that is missing would be created on the disk of its nearest
/// parent.
std::optional<uVQMINT64> FreeBytes(const std::string& directory)
{
    // The first step takes only the "/" at the end off.
    for (std::filesystem::path place = std::filesystem::path(directory).parent_path();; place = place.parent_path()) {
        struct statvfs status = {};
        if (statvfs(place.c_str(), &status) == 0) {
            return uVQMINT64{status.f_bavail} * uVQMINT64{status.f_frsize};
        }
        if (!IsAbsence(errno) || place == place.parent_path()) {
            return std::nullopt;
        }
    }
}

std::map<std::string, std::string> LookAlikesOf(const Contents& contents, const std::string& directory)
{
    std::set<std::string> missing;
    for (const ContentFile& file : contents.files) {
        if (file.kind == FileKind::kMissing) {
            missing.insert(file.name);
        }
    }
    return missing.empty() ? std::map<std::string, std::string>() : FindLookAlikes(directory, missing);
}

/// Lists the items of `policy` and the files that they name.
void ListItems(const _VQMPolicy& policy, Contents& contents)
{
    const std::size_t total = schedule::CountItems(policy);
    contents.items.reserve(total);
    std::unordered_map<std::string_view, std::size_t> indexes;
    indexes.reserve(total);
    std::size_t period = 0;
    for (const _VQMSchdule& schedule : policy.listSchedule) {
        for (const _VQMContentInfo& content : schedule.listContents) {
            const auto [entry, isNew] = indexes.try_emplace(content.strName, contents.files.size());
            if (isNew) {
                contents.files.push_back({content.strName});
            }
            contents.items.push_back({period, entry->second, content.nSize});
        }
        ++period;
    }
}

/// Two threads share the files, because a disk or a server can work on more than one request at a time. Only
/// the calling thread reports progress.
void ExamineFiles(const FileTree& tree, Contents& contents, const Progress& progress)
{
    const std::size_t total = contents.files.size();
    std::atomic<std::size_t> next = 0;
    const auto examine = [&](const Progress& report) {
        CVQMFilePipe pipe;
        for (std::size_t first; (first = next.fetch_add(kFilesOfAStep)) < total;) {
            const std::size_t end = std::min(first + kFilesOfAStep, total);
            for (std::size_t file = first; file < end; ++file) {
                ExamineFile(tree, contents.directory, pipe, contents.files[file]);
            }
            if (report) {
                report(first, total);
            }
        }
    };
    std::future<void> other;
    if (total > kFilesOfAStep) {
        other = InBackground([&examine] { examine(nullptr); });
    }
    examine(progress);
    if (other.valid()) {
        other.get();
    }
    if (progress) {
        progress(total, total);
    }
}

void SumUp(Contents& contents)
{
    for (const ContentItem& item : contents.items) {
        contents.complete += contents.SizeMatches(item) ? 1 : 0;
        contents.announcedBytes = AddUpTo(contents.announcedBytes, item.announced);
    }
    contents.missingBytes = BytesToCopy(contents);
}

} // namespace

Contents ExamineContents(const _VQMPolicy& policy, const FileTree& tree, const std::string& directory,
                         const Progress& progress)
{
    Contents contents;
    contents.directory = directory;
    const std::string located = tree.Locate(directory);
    std::error_code ignored;
    contents.directoryPresent = std::filesystem::is_directory(located, ignored);
    ListItems(policy, contents);
    ExamineFiles(tree, contents, progress);
    SumUp(contents);
    const bool refused = std::any_of(contents.files.begin(), contents.files.end(),
                                     [](const ContentFile& file) { return file.kind == FileKind::kNotExamined; });
    contents.closedFolder = refused ? ClosedFolder(located) : "";
    contents.freeBytes = FreeBytes(located);
    contents.lookAlikes = LookAlikesOf(contents, located);
    if (!contents.directoryPresent) {
        contents.directoryProblem = "is missing" + WhyMissing(directory, tree) + LookAlikeOf(directory, tree);
    }
    return contents;
}

} // namespace readiness
