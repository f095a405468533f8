#include "Platform/common/TemporaryFile.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/file.h>
#include <sys/types.h>
#include <unistd.h>
#include <utility>

namespace platform {

namespace {

/// With "/" at its end; empty for a plain name, which is in the working directory.
std::string FolderOf(const std::string& path)
{
    return path.substr(0, path.rfind('/') + 1);
}

std::string OrWorkingDirectory(const std::string& folder)
{
    return folder.empty() ? "." : folder;
}

void RemoveIfLeftBehind(int folder, const char* name)
{
    // Other programs may have made a FIFO or a link of that name: neither may stop this call or lead
    // elsewhere.
    const FileDescriptor file(openat(folder, name, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW));
    // A file whose lock is free has no living writer.
    if (file.IsOpen() && flock(file.Get(), LOCK_EX | LOCK_NB) == 0) {
        unlinkat(folder, name, 0);
    }
}

/// Makes the new name last. It is in place already, so a folder that cannot be synced is not an error.
void SyncFolder(const std::string& folder)
{
    const FileDescriptor opened(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (opened.IsOpen()) {
        fsync(opened.Get());
    }
}

} // namespace

Result<TemporaryFile> TemporaryFile::CreateFor(const std::string& target, const std::string& prefix)
{
    // Another writer that clears up may hold the lock for a moment and take the file for a leftover.
    constexpr int kAttempts = 10;
    TemporaryFile file(target);
    int error = EAGAIN;
    for (int i = 0; i < kAttempts && error == EAGAIN; ++i) {
        error = file.Create(prefix);
    }
    if (error != 0) {
        return SystemError(target, error);
    }
    return Result<TemporaryFile>(std::move(file));
}

void TemporaryFile::RemoveLeftBehind(const std::string& target, std::string_view prefix)
{
    const std::unique_ptr<DIR, int (*)(DIR*)> listing(opendir(OrWorkingDirectory(FolderOf(target)).c_str()), closedir);
    if (listing == nullptr) {
        return;
    }
    while (const dirent* entry = readdir(listing.get())) {
        if (std::strncmp(entry->d_name, prefix.data(), prefix.size()) == 0) {
            RemoveIfLeftBehind(dirfd(listing.get()), entry->d_name);
        }
    }
}

// `other` must have no path afterwards, because its destructor removes the file at that path.
TemporaryFile::TemporaryFile(TemporaryFile&& other) noexcept
    : target_(std::move(other.target_)), file_(std::move(other.file_)), path_(std::exchange(other.path_, {}))
{
}

TemporaryFile::~TemporaryFile()
{
    if (!path_.empty()) {
        unlink(path_.c_str());
    }
}

void TemporaryFile::TakeOver(const struct stat& other)
{
    struct stat own {};
    if (fstat(file_.Get(), &own) == -1) {
        return;
    }
    bool sameGroup = own.st_gid == other.st_gid;
    if (own.st_uid != other.st_uid || !sameGroup) {
        // Only root may change the owner; the members of a group may hand their files to it.
        sameGroup = fchown(file_.Get(), other.st_uid, other.st_gid) == 0 ||
                    fchown(file_.Get(), own.st_uid, other.st_gid) == 0 || sameGroup;
    }
    constexpr mode_t kOfGroup = S_IRWXG;
    const mode_t mode = other.st_mode & (S_IRWXU | S_IRWXG | S_IRWXO);
    // The rights of the old group must not fall to another one.
    fchmod(file_.Get(), sameGroup ? mode : mode & ~kOfGroup);
}

Result<void> TemporaryFile::TakeOverAll(const struct stat& other)
{
    constexpr mode_t kMode = S_IRWXU | S_IRWXG | S_IRWXO;
    struct stat own {};
    if (fstat(file_.Get(), &own) == -1) {
        return SystemError(target_, errno);
    }
    const bool sameOwner = own.st_uid == other.st_uid && own.st_gid == other.st_gid;
    if ((!sameOwner && fchown(file_.Get(), other.st_uid, other.st_gid) == -1) ||
        fchmod(file_.Get(), other.st_mode & kMode) == -1) {
        return SystemError(target_, errno);
    }
    return {};
}

Result<void> TemporaryFile::Write(std::string_view content)
{
    while (!content.empty()) {
        const ssize_t written = write(file_.Get(), content.data(), content.size());
        if (written >= 0) {
            content.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno != EINTR) {
            return SystemError(target_, errno);
        }
    }
    // Synced before the rename: otherwise a power cut could leave the new name with no content.
    if (fsync(file_.Get()) == -1) {
        return SystemError(target_, errno);
    }
    return {};
}

Result<void> TemporaryFile::Rename()
{
    if (rename(path_.c_str(), target_.c_str()) == -1) {
        return SystemError(target_, errno);
    }
    path_.clear();
    SyncFolder(OrWorkingDirectory(FolderOf(target_)));
    return {};
}

/// Returns 0 or the errno; EAGAIN when another writer has taken the file away.
int TemporaryFile::Create(const std::string& prefix)
{
    std::string path = FolderOf(target_) + prefix + "XXXXXX";
    file_ = FileDescriptor(mkostemp(path.data(), O_CLOEXEC));
    if (!file_.IsOpen()) {
        return errno;
    }
    struct stat status {};
    // Between its creation and the lock, another writer may lock the file, or take it for a leftover and
    // remove it. On a file system without locks, `flock` fails with another error, and the file is used
    // unlocked.
    const bool taken = flock(file_.Get(), LOCK_EX | LOCK_NB) == -1 && errno == EWOULDBLOCK;
    if (taken || (fstat(file_.Get(), &status) == 0 && status.st_nlink == 0)) {
        unlink(path.c_str());
        return EAGAIN;
    }
    path_ = path;
    return 0;
}

} // namespace platform
