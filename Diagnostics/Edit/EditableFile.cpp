#include "Diagnostics/Edit/EditableFile.h"

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

#include "Diagnostics/Text/InputFile.h"
#include "Platform/common/TemporaryFile.h"

namespace {

constexpr char kPrefix[] = ".vqmctl-new-";
constexpr std::size_t kReadUnit = 1048576;

/// The file's bytes; one more than the most that is edited when there are more.
std::string ReadAll(const InputFile& file)
{
    std::string content;
    while (content.size() <= EditableFile::kMaxSize) {
        const std::size_t before = content.size();
        content.resize(std::min(before + kReadUnit, EditableFile::kMaxSize + 1));
        const std::size_t count = file.Read(content.data() + before, content.size() - before);
        content.resize(before + count);
        if (count == 0) {
            break;
        }
    }
    return content;
}

bool IsSameFile(const struct stat& left, const struct stat& right)
{
    return left.st_dev == right.st_dev && left.st_ino == right.st_ino;
}

} // namespace

EditableFile::EditableFile(const std::string& name, Use use) : name_(name)
{
    if (use == Use::kReplace && name == kStdin) {
        Refuse("change", "a file is expected");
    }
    try {
        if (use == Use::kReplace) {
            // The name is checked first, because opening follows a link; what was opened is checked below.
            struct stat named = {};
            if (lstat(name.c_str(), &named) != 0) {
                throw std::system_error(errno, std::generic_category());
            }
            CheckReplaceable(named);
        }
        const InputFile file(name);
        status_ = file.Status();
        if (use == Use::kReplace) {
            CheckReplaceable(status_);
        }
        content_ = ReadAll(file);
    } catch (const std::system_error& error) {
        Refuse("read", error.code().message());
    }
    if (content_.size() > kMaxSize) {
        Refuse("read", "more than " + std::to_string(kMaxSize) + " bytes; expected a schedule document");
    }
}

void EditableFile::Refuse(const std::string& what, const std::string& why) const
{
    throw std::runtime_error("cannot " + what + " '" + ShownName(name_) + "': " + why);
}

void EditableFile::CheckReplaceable(const struct stat& status) const
{
    if (S_ISLNK(status.st_mode)) {
        Refuse("change", "it is a link; name the file that it leads to");
    }
    if (!S_ISREG(status.st_mode)) {
        Refuse("change", "it is not a regular file");
    }
    if (status.st_nlink > 1) {
        Refuse("change", "it has " + std::to_string(status.st_nlink) +
                             " names (hard links), and the others would keep the old content");
    }
    // A rename needs no right to write to the old file, so a read-only one would be replaced.
    if (faccessat(AT_FDCWD, name_.c_str(), W_OK, AT_EACCESS) != 0) {
        Refuse("change", std::generic_category().message(errno));
    }
}

/// Compares the content and not the time of the last change: two changes may have the same time.
void EditableFile::CheckUnchanged() const
{
    struct stat named = {};
    if (lstat(name_.c_str(), &named) != 0) {
        Refuse("change", std::generic_category().message(errno));
    }
    std::string now;
    if (IsSameFile(named, status_) && S_ISREG(named.st_mode)) {
        try {
            now = ReadAll(InputFile(name_));
        } catch (const std::system_error& error) {
            Refuse("change", error.code().message());
        }
    }
    if (!IsSameFile(named, status_) || now != content_ || named.st_mode != status_.st_mode ||
        named.st_uid != status_.st_uid || named.st_gid != status_.st_gid || named.st_nlink != 1) {
        Refuse("change", "it has changed since it was read; try again");
    }
}

void EditableFile::Replace(std::string_view content) const
{
    const auto refuse = [this](const platform::Error& error) {
        Refuse("change", std::generic_category().message(error.code));
    };
    platform::TemporaryFile::RemoveLeftBehind(name_, kPrefix);
    platform::Result<platform::TemporaryFile> file = platform::TemporaryFile::CreateFor(name_, kPrefix);
    if (!file) {
        Refuse("change", "no new file can be made beside it: " + std::generic_category().message(file.Error().code));
    }
    if (const platform::Result<void> same = file->TakeOverAll(status_); !same) {
        Refuse("change", "its owner and mode cannot be kept: " + std::generic_category().message(same.Error().code));
    }
    if (const platform::Result<void> written = file->Write(content); !written) {
        refuse(written.Error());
    }
    CheckUnchanged();
    if (const platform::Result<void> renamed = file->Rename(); !renamed) {
        refuse(renamed.Error());
    }
}
