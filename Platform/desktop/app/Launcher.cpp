#include "Platform/desktop/app/Launcher.h"

#include <aul.h>
#include <cerrno>
#include <cstring>
#include <glib.h>
#include <new>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

#include "Platform/desktop/app/EntryFile.h"
#include "Platform/desktop/app/ProgramFolder.h"
#include "Platform/desktop/app/Spawn.h"
#include "Platform/desktop/base/PlatformLog.h"

namespace desktop {

namespace {

bool IsValidId(const char* id)
{
    return id != nullptr && id[0] != '\0' && id[0] != '.' && std::strchr(id, '/') == nullptr;
}

/// A bare name is looked for beside this program first: what was installed with it belongs to it.
std::string FindProgram(const std::string& name)
{
    if (name.find('/') == std::string::npos && !ProgramFolder().empty()) {
        std::string beside = ProgramFolder() + "/" + name;
        if (access(beside.c_str(), X_OK) == 0) {
            return beside;
        }
    }
    char* path = g_find_program_in_path(name.c_str());
    std::string found = path != nullptr ? path : "";
    g_free(path);
    return found;
}

int ReportNotStarted(const EntryCache::Entry& entry, int error)
{
    const std::string& folder = entry.content.workingFolder;
    struct stat status {};
    const bool folderMissing = !folder.empty() && stat(folder.c_str(), &status) == -1;
    PLATFORM_LOG(DLOG_ERROR, "%s: cannot start %s%s%s: %s", entry.path.c_str(), entry.program.c_str(),
                 folderMissing ? " in " : "", folderMissing ? folder.c_str() : "",
                 std::generic_category().message(error).c_str());
    return kLaunchNotStarted;
}

int Start(EntryCache::Entry& entry)
{
    const DesktopEntry& content = entry.content;
    if (!content.tryProgram.empty() && FindProgram(content.tryProgram).empty()) {
        PLATFORM_LOG(DLOG_ERROR, "%s: not installed: no program %s (TryExec)", entry.path.c_str(),
                     content.tryProgram.c_str());
        return kLaunchNoProgram;
    }
    pid_t pid = -1;
    int error = entry.program.empty() ? ENOENT : Spawn(entry.program, content.arguments, content.workingFolder, pid);
    // The program may have moved since it was found.
    if (error == ENOENT || error == EACCES) {
        entry.program = FindProgram(content.arguments.front());
        if (entry.program.empty()) {
            PLATFORM_LOG(DLOG_ERROR, "%s: program missing: %s", entry.path.c_str(), content.arguments.front().c_str());
            return kLaunchNoProgram;
        }
        error = Spawn(entry.program, content.arguments, content.workingFolder, pid);
    }
    return error == 0 ? pid : ReportNotStarted(entry, error);
}

} // namespace

int Launcher::Launch(const char* id)
{
    if (!IsValidId(id)) {
        PLATFORM_LOG(DLOG_ERROR, "not an application id: \"%s\"", id != nullptr ? id : "");
        return kLaunchBadId;
    }
    const std::optional<EntryFile> file = FindEntryFile(id);
    if (!file) {
        PLATFORM_LOG(DLOG_ERROR, "no entry \"%s.desktop\" in %s", id, EntryFolders().c_str());
        return kLaunchNoEntry;
    }
    const Result<EntryCache::Entry*> entry = entries_.Get(*file);
    if (!entry) {
        PLATFORM_LOG(DLOG_ERROR, "%s: %s", file->path.c_str(), entry.ProblemText().c_str());
        return kLaunchBadEntry;
    }
    if ((*entry)->content.hidden) {
        PLATFORM_LOG(DLOG_ERROR, "no entry \"%s.desktop\": %s hides it", id, file->path.c_str());
        return kLaunchNoEntry;
    }
    return Start(**entry);
}

} // namespace desktop

int aul_launch_app(const char* appid, bundle* /*kb*/)
{
    static desktop::Launcher launcher;
    try {
        return launcher.Launch(appid);
    } catch (const std::bad_alloc&) {
        PLATFORM_LOG(DLOG_ERROR, "out of memory");
        return desktop::kLaunchNotStarted;
    }
}
