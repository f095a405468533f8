#include "Platform/desktop/base/SettingsStore.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

#include "Platform/desktop/base/FileDescriptor.h"
#include "Platform/desktop/base/ReplaceFile.h"

namespace desktop {

namespace {

constexpr char kFolderName[] = "/tvsettings";
constexpr std::size_t kLongestPart = 255;

std::string& Problem()
{
    thread_local std::string problem;
    return problem;
}

void SetProblem(std::string what)
{
    Problem() = std::move(what);
}

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

/// A relative path in one of these variables is to be ignored, as everywhere.
std::string AbsoluteFromEnvironment(const char* name)
{
    const char* value = std::getenv(name);
    return value != nullptr && value[0] == '/' ? value : "";
}

bool MakeFolders(const std::string& path)
{
    for (std::size_t end = path.find('/', 1);; end = path.find('/', end + 1)) {
        const std::string folder = path.substr(0, end);
        if (mkdir(folder.c_str(), S_IRWXU) == -1 && errno != EEXIST) {
            struct stat there {};
            const int error = errno;
            // A read-only or foreign parent may say so before it looks at what is there.
            if (stat(folder.c_str(), &there) == -1 || !S_ISDIR(there.st_mode)) {
                NoteSettingsProblem(folder, error);
                return false;
            }
        }
        if (end == std::string::npos) {
            return true;
        }
    }
}

/// Says what stands at the path instead of a plain file.
void NoteWrongKind(const std::string& path, mode_t mode)
{
    SetProblem(path + (S_ISLNK(mode) ? ": a symbolic link, not a plain file" : ": not a plain file"));
}

/// The open that follows no link calls one a loop.
void NoteUnopened(const std::string& path, int error)
{
    struct stat status {};
    if (error == ELOOP && lstat(path.c_str(), &status) == 0 && S_ISLNK(status.st_mode)) {
        NoteWrongKind(path, status.st_mode);
    } else {
        NoteSettingsProblem(path, error);
    }
}

/// Without waiting, whatever stands there.
std::optional<std::string> ReadPlainFile(const std::string& path, struct stat& status)
{
    const FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY));
    if (!file.IsOpen() || fstat(file.Get(), &status) == -1) {
        NoteUnopened(path, errno);
        return std::nullopt;
    }
    if (!S_ISREG(status.st_mode)) {
        NoteWrongKind(path, status.st_mode);
        return std::nullopt;
    }
    // One byte for the editor's line end, one to notice what is too large.
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
            NoteSettingsProblem(path, errno);
            return std::nullopt;
        }
    }
    if (size > 0 && size < buffer.size() && buffer[size - 1] == '\n') {
        --size;
    }
    if (size > kLargestValue) {
        SetProblem(path + ": larger than a setting can be");
        return std::nullopt;
    }
    SetProblem("");
    return std::string(buffer.data(), size);
}

bool MayBeReplaced(const std::string& path)
{
    struct stat status {};
    if (lstat(path.c_str(), &status) == -1) {
        if (errno == ENOENT) {
            return true;
        }
        NoteSettingsProblem(path, errno);
        return false;
    }
    if (!S_ISREG(status.st_mode)) {
        NoteWrongKind(path, status.st_mode);
        return false;
    }
    return true;
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

std::optional<std::string> SettingsFile(std::string_view key)
{
    if (!IsValidKey(key)) {
        SetProblem("not a key: \"" + std::string(key.substr(0, kLongestKey)) + "\"");
        return std::nullopt;
    }
    std::string path = SettingsFolder();
    if (path.empty()) {
        SetProblem("no settings folder: neither XDG_CONFIG_HOME nor HOME holds an absolute path");
        return std::nullopt;
    }
    path += '/';
    path += key;
    return path;
}

std::optional<std::string> ReadSetting(std::string_view key)
{
    const std::optional<std::string> path = SettingsFile(key);
    struct stat status {};
    return path ? ReadPlainFile(*path, status) : std::nullopt;
}

bool WriteSetting(std::string_view key, std::string_view value)
{
    const std::optional<std::string> path = SettingsFile(key);
    if (!path || !MakeFolders(path->substr(0, path->rfind('/'))) || !MayBeReplaced(*path)) {
        return false;
    }
    if (value.size() > kLargestValue) {
        SetProblem(*path + ": the value is larger than a setting can be");
        return false;
    }
    std::string content(value);
    if (!content.empty() && content.back() == '\n') {
        content += '\n'; // reading takes one off
    }
    const int error = ReplaceFile(*path, content);
    if (error != 0) {
        NoteSettingsProblem(*path, error);
        return false;
    }
    SetProblem("");
    return true;
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

const std::string& LastSettingsProblem()
{
    return Problem();
}

void NoteSettingsProblem(const std::string& path, int error)
{
    SetProblem(path + ": " + std::generic_category().message(error));
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
    if (const std::optional<std::string> path = SettingsFile(key)) {
        version.value = ReadPlainFile(*path, status);
        version.device = status.st_dev;
        version.inode = status.st_ino;
        version.changedSeconds = status.st_mtim.tv_sec;
        version.changedNanoseconds = status.st_mtim.tv_nsec;
    }
    return version;
}

} // namespace desktop
