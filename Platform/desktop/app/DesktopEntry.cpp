#include "Platform/desktop/app/DesktopEntry.h"

#include <glib.h>
#include <memory>
#include <sys/stat.h>

namespace desktop {

namespace {

constexpr char kGroup[] = G_KEY_FILE_DESKTOP_GROUP;
constexpr off_t kLargestEntry = 1 << 20;

struct Release {
    void operator()(char* text) const { g_free(text); }
    void operator()(char** texts) const { g_strfreev(texts); }
    void operator()(GKeyFile* file) const { g_key_file_unref(file); }
    void operator()(GError* error) const { g_error_free(error); }
};

using Text = std::unique_ptr<char, Release>;
using Texts = std::unique_ptr<char*, Release>;
using KeyFile = std::unique_ptr<GKeyFile, Release>;

/// Takes a GLib error over into a text.
class ErrorText {
public:
    explicit ErrorText(std::string& text) : text_(text) {}
    ErrorText(const ErrorText&) = delete;
    ErrorText& operator=(const ErrorText&) = delete;
    ~ErrorText()
    {
        const std::unique_ptr<GError, Release> error(error_);
        if (error != nullptr) {
            text_ = error->message;
        }
    }
    operator GError**() { return &error_; }

private:
    std::string& text_;
    GError* error_ = nullptr;
};

std::string Value(GKeyFile* file, const char* key)
{
    const Text value(g_key_file_get_string(file, kGroup, key, nullptr));
    return value != nullptr ? value.get() : "";
}

bool SameTime(const timespec& a, const timespec& b)
{
    return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

std::string NameOf(GKeyFile* file)
{
    const Text name(g_key_file_get_locale_string(file, kGroup, G_KEY_FILE_DESKTOP_KEY_NAME, nullptr, nullptr));
    return name != nullptr ? name.get() : "";
}

/// Replaces the field codes of one argument. No files are handed over: their codes vanish, and
/// with them an argument that is nothing else.
void AppendExpanded(std::vector<std::string>& arguments, std::string_view argument, GKeyFile* file,
                    const std::string& path)
{
    if (argument == "%i") {
        const std::string icon = Value(file, G_KEY_FILE_DESKTOP_KEY_ICON);
        if (!icon.empty()) {
            arguments.insert(arguments.end(), {"--icon", icon});
        }
        return;
    }
    std::string expanded;
    for (std::size_t i = 0; i < argument.size(); ++i) {
        if (argument[i] != '%' || i + 1 == argument.size()) {
            expanded += argument[i];
            continue;
        }
        switch (argument[++i]) {
        case '%':
            expanded += '%';
            break;
        case 'c':
            expanded += NameOf(file);
            break;
        case 'k':
            expanded += path;
            break;
        default:
            break;
        }
    }
    const bool onlyCodes = argument.size() == 2 && argument.front() == '%' && expanded.empty();
    if (!onlyCodes) {
        arguments.push_back(expanded);
    }
}

/// The command line is split first and its field codes replaced afterwards, so nothing that an
/// entry's name or path holds is taken for more than one argument.
std::vector<std::string> ArgumentsOf(GKeyFile* file, const std::string& path, std::string& problem)
{
    const std::string commandLine = Value(file, G_KEY_FILE_DESKTOP_KEY_EXEC);
    if (commandLine.empty()) {
        problem = "no command line (Exec)";
        return {};
    }
    char** split = nullptr;
    if (g_shell_parse_argv(commandLine.c_str(), nullptr, &split, ErrorText(problem)) == FALSE) {
        return {};
    }
    const Texts owned(split);
    std::vector<std::string> arguments;
    for (char** argument = split; *argument != nullptr; ++argument) {
        AppendExpanded(arguments, *argument, file, path);
    }
    if (arguments.empty() || arguments.front().empty()) {
        problem = "the command line (Exec) names no program";
        return {};
    }
    return arguments;
}

std::string EntriesIn(std::string_view dataFolder)
{
    std::string path(dataFolder);
    if (path.empty() || path.back() != '/') {
        path += '/';
    }
    return path + "applications";
}

template <typename Visit>
void ForEachFolder(Visit visit)
{
    visit(EntriesIn(g_get_user_data_dir()));
    for (const char* const* folder = g_get_system_data_dirs(); *folder != nullptr; ++folder) {
        visit(EntriesIn(*folder));
    }
}

} // namespace

bool EntryFile::operator==(const EntryFile& other) const
{
    return device == other.device && inode == other.inode && size == other.size && SameTime(modified, other.modified) &&
           SameTime(changed, other.changed) && path == other.path;
}

std::optional<EntryFile> FindEntryFile(std::string_view id)
{
    std::optional<EntryFile> found;
    std::string path;
    ForEachFolder([&](const std::string& folder) {
        if (found) {
            return;
        }
        path.assign(folder).append("/").append(id).append(".desktop");
        struct stat status {};
        if (stat(path.c_str(), &status) == 0) {
            found = EntryFile{path, status.st_dev, status.st_ino, status.st_size, status.st_mtim, status.st_ctim};
        }
    });
    return found;
}

std::string EntryFolders()
{
    std::string all;
    ForEachFolder([&all](const std::string& folder) { all.append(all.empty() ? "" : ", ").append(folder); });
    return all;
}

std::optional<DesktopEntry> ReadEntry(const EntryFile& file, std::string& problem)
{
    struct stat status {};
    if (stat(file.path.c_str(), &status) == -1 || !S_ISREG(status.st_mode)) {
        problem = "not a plain file";
        return std::nullopt;
    }
    if (status.st_size > kLargestEntry) {
        problem = "too large for a desktop entry";
        return std::nullopt;
    }
    const KeyFile content(g_key_file_new());
    if (g_key_file_load_from_file(content.get(), file.path.c_str(), G_KEY_FILE_NONE, ErrorText(problem)) == FALSE) {
        return std::nullopt;
    }
    DesktopEntry entry;
    entry.hidden = g_key_file_get_boolean(content.get(), kGroup, G_KEY_FILE_DESKTOP_KEY_HIDDEN, nullptr) != FALSE;
    if (entry.hidden) {
        return entry;
    }
    if (Value(content.get(), G_KEY_FILE_DESKTOP_KEY_TYPE) != G_KEY_FILE_DESKTOP_TYPE_APPLICATION) {
        problem = "not an application's entry (Type)";
        return std::nullopt;
    }
    entry.arguments = ArgumentsOf(content.get(), file.path, problem);
    if (entry.arguments.empty()) {
        return std::nullopt;
    }
    entry.tryProgram = Value(content.get(), G_KEY_FILE_DESKTOP_KEY_TRY_EXEC);
    entry.workingFolder = Value(content.get(), G_KEY_FILE_DESKTOP_KEY_PATH);
    return entry;
}

} // namespace desktop
