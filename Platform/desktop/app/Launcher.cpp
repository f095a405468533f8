#include "Platform/desktop/app/Launcher.h"

#include <aul.h>
#include <cerrno>
#include <cstring>
#include <new>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <system_error>
#include <utility>

#include "Platform/desktop/app/EntryFile.h"
#include "Platform/desktop/app/FindProgram.h"
#include "Platform/desktop/app/Spawn.h"
#include "Platform/desktop/base/PlatformLog.h"

namespace desktop {

namespace {

bool IsValidId(const char* id)
{
    return id != nullptr && id[0] != '\0' && id[0] != '.' && std::strchr(id, '/') == nullptr;
}

Error Failure(LaunchError reason, std::string text)
{
    return {std::move(text), static_cast<int>(reason)};
}

Error NotStarted(const EntryCache::Entry& entry, const Error& spawnError)
{
    const std::string& folder = entry.content.workingFolder;
    struct stat status {};
    // The system reports a missing working folder as if the program were missing.
    const bool folderMissing = !folder.empty() && stat(folder.c_str(), &status) == -1;
    return Failure(LaunchError::kNotStarted, entry.path + ": cannot start " + entry.program +
                                                 (folderMissing ? " in " + folder : "") + ": " +
                                                 std::generic_category().message(spawnError.code));
}

Result<pid_t> Start(EntryCache::Entry& entry)
{
    const DesktopEntry& content = entry.content;
    if (!content.tryProgram.empty() && FindProgram(content.tryProgram).empty()) {
        return Failure(LaunchError::kNoProgram,
                       entry.path + ": not installed: no program " + content.tryProgram + " (TryExec)");
    }
    if (!entry.program.empty()) {
        Result<pid_t> started = Spawn(entry.program, content.arguments, content.workingFolder);
        if (started) {
            return started;
        }
        const int error = started.Error().code;
        if (error != ENOENT && error != EACCES) {
            return NotStarted(entry, started.Error());
        }
        // The program may have moved since it was found: look for it again.
    }
    entry.program = FindProgram(content.arguments.front());
    if (entry.program.empty()) {
        return Failure(LaunchError::kNoProgram, entry.path + ": program missing: " + content.arguments.front());
    }
    const Result<pid_t> started = Spawn(entry.program, content.arguments, content.workingFolder);
    return started ? started : NotStarted(entry, started.Error());
}

} // namespace

Result<pid_t> Launcher::Launch(const char* id)
{
    if (!IsValidId(id)) {
        return Failure(LaunchError::kBadId,
                       std::string("not an application id: \"") + (id != nullptr ? id : "") + "\"");
    }
    const std::string entryName = std::string("no entry \"") + id + ".desktop\"";
    const std::optional<EntryFile> file = FindEntryFile(id);
    if (!file) {
        return Failure(LaunchError::kNoEntry, entryName + " in " + EntryFolders());
    }
    const Result<EntryCache::Entry*> entry = entries_.Get(*file);
    if (!entry) {
        return Failure(LaunchError::kBadEntry, file->path + ": " + entry.Error().text);
    }
    if ((*entry)->content.hidden) {
        return Failure(LaunchError::kNoEntry, entryName + ": " + file->path + " hides it");
    }
    return Start(**entry);
}

} // namespace desktop

int aul_launch_app(const char* appid, bundle* /*kb*/)
{
    static desktop::Launcher launcher;
    try {
        const desktop::Result<pid_t> launched = launcher.Launch(appid);
        if (launched) {
            return *launched;
        }
        PLATFORM_LOG(DLOG_ERROR, "%s", launched.Error().text.c_str());
        return launched.Error().code;
    } catch (const std::bad_alloc&) {
        PLATFORM_LOG(DLOG_ERROR, "out of memory");
        return static_cast<int>(desktop::LaunchError::kNotStarted);
    }
}
