#include "Platform/desktop/base/ReplaceFile.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include "Platform/desktop/base/FileDescriptor.h"

namespace desktop {

namespace {

constexpr char kPrefix[] = ".tvsettings-new-";

/// A temporary file that is locked as long as its writer lives, so that others can tell a file
/// in use from one that was left behind.
class TemporaryFile {
public:
    /// `error` becomes 0 or the errno.
    TemporaryFile(const std::string& folder, int& error)
    {
        // Whoever clears up may hold the lock for a moment and take the file for a leftover.
        constexpr int kAttempts = 10;
        error = EAGAIN;
        for (int i = 0; i < kAttempts && error == EAGAIN; ++i) {
            error = Create(folder);
        }
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile()
    {
        if (!path_.empty()) {
            unlink(path_.c_str());
        }
    }

    int Write(std::string_view content)
    {
        while (!content.empty()) {
            const ssize_t written = write(file_.Get(), content.data(), content.size());
            if (written >= 0) {
                content.remove_prefix(static_cast<std::size_t>(written));
            } else if (errno != EINTR) {
                return errno;
            }
        }
        return fsync(file_.Get()) == 0 ? 0 : errno;
    }

    /// Before there is content that a new group could read.
    void TakeOver(const struct stat& other)
    {
        struct stat own {};
        if (fstat(file_.Get(), &own) == -1) {
            return;
        }
        bool sameGroup = own.st_gid == other.st_gid;
        if (own.st_uid != other.st_uid || !sameGroup) {
            // Only root gives files away; a member may hand them to the group.
            sameGroup = fchown(file_.Get(), other.st_uid, other.st_gid) == 0 ||
                        fchown(file_.Get(), own.st_uid, other.st_gid) == 0 || sameGroup;
        }
        constexpr mode_t kOfGroup = S_IRWXG;
        const mode_t mode = other.st_mode & (S_IRWXU | S_IRWXG | S_IRWXO);
        fchmod(file_.Get(), sameGroup ? mode : mode & ~kOfGroup);
    }

    int MoveTo(const std::string& path)
    {
        if (rename(path_.c_str(), path.c_str()) == -1) {
            return errno;
        }
        path_.clear();
        return 0;
    }

private:
    int Create(const std::string& folder)
    {
        std::string path = folder + "/" + kPrefix + "XXXXXX";
        file_ = FileDescriptor(mkostemp(path.data(), O_CLOEXEC));
        if (!file_.IsOpen()) {
            return errno;
        }
        struct stat status {};
        const bool taken = flock(file_.Get(), LOCK_EX | LOCK_NB) == -1 && errno == EWOULDBLOCK;
        if (taken || (fstat(file_.Get(), &status) == 0 && status.st_nlink == 0)) {
            unlink(path.c_str());
            return EAGAIN;
        }
        path_ = path;
        return 0;
    }

    FileDescriptor file_;
    std::string path_;
};

void RemoveIfLeftBehind(int folder, const char* name)
{
    const FileDescriptor file(openat(folder, name, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW));
    if (file.IsOpen() && flock(file.Get(), LOCK_EX | LOCK_NB) == 0) {
        unlinkat(folder, name, 0);
    }
}

void RemoveLeftovers(const std::string& folder)
{
    const std::unique_ptr<DIR, int (*)(DIR*)> listing(opendir(folder.c_str()), closedir);
    if (listing == nullptr) {
        return;
    }
    while (const dirent* entry = readdir(listing.get())) {
        if (std::strncmp(entry->d_name, kPrefix, sizeof kPrefix - 1) == 0) {
            RemoveIfLeftBehind(dirfd(listing.get()), entry->d_name);
        }
    }
}

/// The new value is in place already; a folder that cannot be synced does not take it back.
void SyncFolder(const std::string& folder)
{
    const FileDescriptor opened(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (opened.IsOpen()) {
        fsync(opened.Get());
    }
}

} // namespace

int ReplaceFile(const std::string& path, std::string_view content)
{
    const std::string folder = path.substr(0, path.rfind('/'));
    RemoveLeftovers(folder);
    int error = 0;
    TemporaryFile file(folder, error);
    struct stat old {};
    if (error == 0 && lstat(path.c_str(), &old) == 0 && S_ISREG(old.st_mode)) {
        file.TakeOver(old);
    }
    if (error == 0) {
        error = file.Write(content);
    }
    if (error == 0) {
        error = file.MoveTo(path);
    }
    if (error == 0) {
        SyncFolder(folder);
    }
    return error;
}

} // namespace desktop
