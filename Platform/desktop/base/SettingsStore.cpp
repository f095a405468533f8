#include "Platform/desktop/base/SettingsStore.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Platform/common/FileDescriptor.h"
#include "Platform/common/ReplaceFile.h"

namespace desktop {

namespace {

constexpr char kFolderName[] = "/tvsettings";
/// The longest file name that file systems take, in bytes.
constexpr std::size_t kLongestPart = 255;

bool IsValidPart(std::string_view part)
{
    return !part.empty() && part.front() != '.' && part.size() <= kLongestPart &&
           part.find('\0') == std::string_view::npos;
}

bool IsValidKey(std::string_view key)
{
    if (key.size() > kLongestKey || key.find("..") != std::string_view::npos) {
        return false;
    }
    std::size_t begin = 0;
    for (std::size_t end = key.find('/'); end != std::string_view::npos; end = key.find('/', begin)) {
        if (!IsValidPart(key.substr(begin, end - begin))) {
            return false;
        }
        begin = end + 1;
    }
    return IsValidPart(key.substr(begin));
}

/// Ignores a relative path: these variables count only when they are absolute.
std::string AbsoluteFromEnvironment(const char* name)
{
    const char* value = std::getenv(name);
    return value != nullptr && value[0] == '/' ? value : "";
}

Result<void> MakeFolders(const std::string& path)
{
    for (std::size_t end = path.find('/', 1);; end = path.find('/', end + 1)) {
        const std::string folder = path.substr(0, end);
        if (mkdir(folder.c_str(), S_IRWXU) == -1 && errno != EEXIST) {
            struct stat there {};
            const int error = errno;
            // A parent that is read-only or belongs to another user may refuse before it looks for the folder.
            if (stat(folder.c_str(), &there) == -1 || !S_ISDIR(there.st_mode)) {
                return SystemError(folder, error);
            }
        }
        if (end == std::string::npos) {
            return {};
        }
    }
}

/// Names the kind of file that is there instead of a plain one.
Error WrongKind(const std::string& path, mode_t mode)
{
    return {path + (S_ISLNK(mode) ? ": a symbolic link, not a plain file" : ": not a plain file")};
}

Error NotOpened(const std::string& path, int error)
{
    struct stat status {};
    // With O_NOFOLLOW the system reports a link as a loop.
    if (error == ELOOP && lstat(path.c_str(), &status) == 0 && S_ISLNK(status.st_mode)) {
        return WrongKind(path, status.st_mode);
    }
    return SystemError(path, error);
}

/// Opens a file of any kind without waiting, and reads it if it is a plain one.
Result<std::string> ReadPlainFile(const std::string& path, struct stat& status)
{
    const platform::FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY));
    if (!file.IsOpen() || fstat(file.Get(), &status) == -1) {
        return NotOpened(path, errno);
    }
    if (!S_ISREG(status.st_mode)) {
        return WrongKind(path, status.st_mode);
    }
    // One byte for the editor's line end, one to notice a file that is too large.
    std::array<char, kLargestValue + 2> buffer;
    std::size_t size = 0;
    while (size < buffer.size()) {
        const ssize_t got = read(file.Get(), buffer.data() + size, buffer.size() - size);
        if (got == 0) {
            break;
        }
        if (got > 0) {
            size += static_cast<std::size_t>(got);
        } else if (errno != EINTR) {
            return SystemError(path, errno);
        }
    }
    if (size > 0 && size < buffer.size() && buffer[size - 1] == '\n') {
        --size;
    }
    if (size > kLargestValue) {
        return Error{path + ": larger than a setting can be"};
    }
    return std::string(buffer.data(), size);
}

Result<void> CheckReplaceable(const std::string& path)
{
    struct stat status {};
    if (lstat(path.c_str(), &status) == -1) {
        if (errno == ENOENT) {
            return {};
        }
        return SystemError(path, errno);
    }
    if (!S_ISREG(status.st_mode)) {
        return WrongKind(path, status.st_mode);
    }
    return {};
}

} // namespace

std::string SettingsFolder()
{
    std::string configuration = AbsoluteFromEnvironment("XDG_CONFIG_HOME");
    if (configuration.empty()) {
        configuration = AbsoluteFromEnvironment("HOME");
        if (configuration.empty()) {
            return "";
        }
        configuration += "/.config";
    }
    return configuration + kFolderName;
}

Result<std::string> SettingsFile(std::string_view key)
{
    if (!IsValidKey(key)) {
        return Error{"not a key: \"" + std::string(key.substr(0, kLongestKey)) + "\""};
    }
    std::string path = SettingsFolder();
    if (path.empty()) {
        return Error{"no settings folder: neither XDG_CONFIG_HOME nor HOME holds an absolute path"};
    }
    path += '/';
    path += key;
    return path;
}

Result<std::string> ReadSetting(std::string_view key)
{
    const Result<std::string> path = SettingsFile(key);
    struct stat status {};
    return path ? ReadPlainFile(*path, status) : path;
}

Result<void> WriteSetting(std::string_view key, std::string_view value)
{
    const Result<std::string> path = SettingsFile(key);
    if (!path) {
        return path.Error();
    }
    if (Result<void> made = MakeFolders(path->substr(0, path->rfind('/'))); !made) {
        return made;
    }
    if (Result<void> replaceable = CheckReplaceable(*path); !replaceable) {
        return replaceable;
    }
    if (value.size() > kLargestValue) {
        return Error{*path + ": the value is larger than a setting can be"};
    }
    std::string content(value);
    if (!content.empty() && content.back() == '\n') {
        content += '\n'; // reading takes one off
    }
    return platform::ReplaceFile(*path, content);
}

std::optional<int> ParseSettingNumber(std::string_view text)
{
    constexpr std::string_view kBlanks = " \t\r\n";
    const std::size_t begin = text.find_first_not_of(kBlanks);
    if (begin == std::string_view::npos) {
        return std::nullopt;
    }
    text = text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) {
        return std::nullopt;
    }
    return number;
}

bool SettingVersion::operator==(const SettingVersion& other) const
{
    return device == other.device && inode == other.inode && changedSeconds == other.changedSeconds &&
           changedNanoseconds == other.changedNanoseconds && value == other.value;
}

SettingVersion CurrentSettingVersion(std::string_view key)
{
    SettingVersion version;
    struct stat status {};
    if (const Result<std::string> path = SettingsFile(key)) {
        if (const Result<std::string> value = ReadPlainFile(*path, status)) {
            version.value = *value;
        }
        version.device = status.st_dev;
        version.inode = status.st_ino;
        version.changedSeconds = status.st_mtim.tv_sec;
        version.changedNanoseconds = status.st_mtim.tv_nsec;
    }
    return version;
}

} // namespace desktop
