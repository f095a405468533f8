#include "Diagnostics/Readiness/Contents.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <limits>
#include <map>
#include <set>
#include <string_view>
#include <system_error>
#include <unordered_map>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include "Diagnostics/Readiness/Access.h"
#include "Diagnostics/Readiness/FileKinds.h"
#include "Diagnostics/Readiness/MissingFile.h"
#include "VQMPipe/VQMFilePipe.h"

namespace readiness {

namespace {

/// Files between two calls of a progress.
constexpr std::size_t kProgressStep = 64;

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

/// `place`: where its path leads.
void ExamineFile(const FileTree& tree, const std::string& place, ContentFile& file)
{
    struct stat status = {};
    if (stat(place.c_str(), &status) != 0) {
        const int error = errno;
        if (IsAbsence(error)) {
            file.kind = FileKind::kMissing;
            file.problem = "is missing" + WhyMissing(file.path, tree);
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

void TakeFacts(const ContentFile& same, ContentFile& file)
{
    file.size = same.size;
    file.kind = same.kind;
    file.readable = same.readable;
    file.problem = same.problem;
}

/// What is still to be copied. The parts of a file that are there need no room again.
uVQMINT64 BytesToCopy(const std::vector<ContentFile>& files)
{
    std::unordered_map<std::string, uVQMINT64> lacking;
    for (const ContentFile& file : files) {
        if (file.announced > file.size) {
            uVQMINT64& bytes = lacking[file.path];
            bytes = std::max(bytes, file.announced - file.size);
        }
    }
    uVQMINT64 sum = 0;
    for (const auto& entry : lacking) {
        sum = AddUpTo(sum, entry.second);
    }
    return sum;
}

/// A directory that is missing would come to lie on its parent's disk.
std::optional<uVQMINT64> FreeBytes(const std::string& directory)
{
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

} // namespace

Contents ExamineContents(const _VQMPolicy& policy, const FileTree& tree, const std::string& directory,
                         const Progress& progress)
{
    Contents contents;
    contents.directory = directory;
    const std::string located = tree.Locate(directory);
    std::error_code ignored;
    contents.directoryPresent = std::filesystem::is_directory(located, ignored);
    const std::size_t total = schedule::CountItems(policy);
    contents.files.reserve(total);
    CVQMFilePipe pipe;
    std::unordered_map<std::string_view, std::size_t> seen; // a file that many items name is examined once
    std::size_t period = 0;
    for (const _VQMSchdule& schedule : policy.listSchedule) {
        for (const _VQMContentInfo& content : schedule.listContents) {
            ContentFile file;
            file.period = period;
            file.name = content.strName;
            file.path = directory + content.strName;
            file.announced = content.nSize;
            const auto [same, isNew] = seen.try_emplace(content.strName, contents.files.size());
            if (isNew) {
                const std::string place = tree.Locate(file.path);
                file.size = pipe.GetFileSize(place.c_str());
                ExamineFile(tree, place, file);
            } else {
                TakeFacts(contents.files[same->second], file);
            }
            contents.complete += file.SizeMatches() ? 1 : 0;
            contents.announcedBytes = AddUpTo(contents.announcedBytes, file.announced);
            contents.files.push_back(std::move(file));
            if (progress && (contents.files.size() % kProgressStep == 0 || contents.files.size() == total)) {
                progress(contents.files.size(), total);
            }
        }
        ++period;
    }
    const bool refused = std::any_of(contents.files.begin(), contents.files.end(),
                                     [](const ContentFile& file) { return file.kind == FileKind::kNotExamined; });
    contents.closedFolder = refused ? ClosedFolder(located) : "";
    contents.missingBytes = BytesToCopy(contents.files);
    contents.freeBytes = FreeBytes(located);
    contents.lookAlikes = LookAlikesOf(contents, located);
    if (!contents.directoryPresent) {
        contents.directoryProblem = "is missing" + WhyMissing(directory, tree) + LookAlikeOf(directory, tree);
    }
    return contents;
}

} // namespace readiness
