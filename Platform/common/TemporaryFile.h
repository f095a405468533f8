#pragma once

#include <string>
#include <string_view>
#include <sys/stat.h>

#include "Platform/common/FileDescriptor.h"
#include "Platform/common/Result.h"

namespace platform {

/// A new file beside the one that it is to replace. Until it is renamed, the other file stays as it is,
/// and the new one is removed with the object.
///
/// A writer that is killed leaves the new file behind. It is locked as long as its writer lives, so that
/// `RemoveLeftBehind` can distinguish a file in use from one that was left behind. Errors name the file to
/// be replaced.
class TemporaryFile {
public:
    /// Creates the file in the folder of `target`, for its owner alone (0600). Its name is `prefix` and
    /// some letters.
    static Result<TemporaryFile> CreateFor(const std::string& target, const std::string& prefix);

    /// Removes the files of this prefix beside `target` that killed writers have left behind.
    static void RemoveLeftBehind(const std::string& target, std::string_view prefix);

    TemporaryFile(TemporaryFile&& other) noexcept;
    TemporaryFile& operator=(TemporaryFile&&) = delete;
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile();

    // Mode and owner of another file. Called before there is content that a new group could read.

    /// Takes over the mode, and owner and group where that is allowed.
    void TakeOver(const struct stat& other);

    /// Takes over mode, owner and group, or fails.
    Result<void> TakeOverAll(const struct stat& other);

    /// Appends the content and syncs the file to disk.
    Result<void> Write(std::string_view content);

    /// Replaces the target, and syncs its folder.
    Result<void> Rename();

private:
    explicit TemporaryFile(std::string target) : target_(std::move(target)) {}

    int Create(const std::string& prefix);

    std::string target_;
    FileDescriptor file_;
    std::string path_;
};

} // namespace platform
