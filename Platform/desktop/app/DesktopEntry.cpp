#include "Platform/desktop/app/DesktopEntry.h"

#include <glib.h>
#include <memory>
#include <sys/stat.h>
#include <utility>

namespace desktop {

namespace {

constexpr char kGroup[] = G_KEY_FILE_DESKTOP_GROUP;
/// In bytes. GLib reads the file as a whole.
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

/// Takes over a GLib error.
Error ErrorOf(GError* error)
{
    const std::unique_ptr<GError, Release> owned(error);
    return {error != nullptr ? error->message : "unknown error"};
}

std::string Value(GKeyFile* file, const char* key)
{
    const Text value(g_key_file_get_string(file, kGroup, key, nullptr));
    return value != nullptr ? value.get() : "";
}

std::string NameOf(GKeyFile* file)
{
    const Text name(g_key_file_get_locale_string(file, kGroup, G_KEY_FILE_DESKTOP_KEY_NAME, nullptr, nullptr));
    return name != nullptr ? name.get() : "";
}

/// Replaces the field codes of one argument. The codes for files vanish, because no files are passed; an
/// argument that is only such a code vanishes with it.
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

/// Splits the command line first and replaces its field codes afterwards, so that an entry's name or path
/// can never turn into several arguments.
Result<std::vector<std::string>> ArgumentsOf(GKeyFile* file, const std::string& path)
{
    const std::string commandLine = Value(file, G_KEY_FILE_DESKTOP_KEY_EXEC);
    if (commandLine.empty()) {
        return Error{"no command line (Exec)"};
    }
    char** split = nullptr;
    GError* error = nullptr;
    if (g_shell_parse_argv(commandLine.c_str(), nullptr, &split, &error) == FALSE) {
        return ErrorOf(error);
    }
    const Texts owned(split);
    std::vector<std::string> arguments;
    for (char** argument = split; *argument != nullptr; ++argument) {
        AppendExpanded(arguments, *argument, file, path);
    }
    if (arguments.empty() || arguments.front().empty()) {
        return Error{"the command line (Exec) names no program"};
    }
    return arguments;
}

} // namespace

Result<DesktopEntry> ReadEntry(const EntryFile& file)
{
    // Before it is opened: the parser would wait for the writer of a FIFO.
    struct stat status {};
    if (stat(file.path.c_str(), &status) == -1 || !S_ISREG(status.st_mode)) {
        return Error{"not a plain file"};
    }
    if (status.st_size > kLargestEntry) {
        return Error{"too large for a desktop entry"};
    }
    const KeyFile content(g_key_file_new());
    GError* error = nullptr;
    if (g_key_file_load_from_file(content.get(), file.path.c_str(), G_KEY_FILE_NONE, &error) == FALSE) {
        return ErrorOf(error);
    }
    DesktopEntry entry;
    entry.hidden = g_key_file_get_boolean(content.get(), kGroup, G_KEY_FILE_DESKTOP_KEY_HIDDEN, nullptr) != FALSE;
    if (entry.hidden) {
        return entry;
    }
    if (Value(content.get(), G_KEY_FILE_DESKTOP_KEY_TYPE) != G_KEY_FILE_DESKTOP_TYPE_APPLICATION) {
        return Error{"not an application's entry (Type)"};
    }
    Result<std::vector<std::string>> arguments = ArgumentsOf(content.get(), file.path);
    if (!arguments) {
        return arguments.Error();
    }
    entry.arguments = std::move(*arguments);
    entry.tryProgram = Value(content.get(), G_KEY_FILE_DESKTOP_KEY_TRY_EXEC);
    entry.workingFolder = Value(content.get(), G_KEY_FILE_DESKTOP_KEY_PATH);
    return entry;
}

Result<EntryCache::Entry*> EntryCache::Get(const EntryFile& file)
{
    if (settled_ && file == file_) {
        return &entry_;
    }
    settled_ = false;
    const bool settled = HasSettled(file); // before the content is read: a change during the reading must be noticed
    Result<DesktopEntry> content = ReadEntry(file);
    if (!content) {
        return content.Error();
    }
    entry_ = {file.path, std::move(*content), ""};
    file_ = file;
    settled_ = settled;
    return &entry_;
}

} // namespace desktop
