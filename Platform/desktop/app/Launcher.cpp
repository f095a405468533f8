#include "Platform/desktop/app/Launcher.h"

#include <aul.h>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <glib.h>
#include <new>
#include <spawn.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

#include "Platform/desktop/app/OwnEnvironment.h"
#include "Platform/desktop/base/PlatformLog.h"

namespace desktop {

namespace {

/// Longer than a tick of any file system's clock that counts in less than seconds.
constexpr long kClockTickNanoseconds = 20'000'000;

std::string ErrorText(int error)
{
    return std::generic_category().message(error);
}

bool IsValidId(const char* id)
{
    return id != nullptr && id[0] != '\0' && id[0] != '.' && std::strchr(id, '/') == nullptr;
}

/// A file that was changed just now may be changed again without its times telling.
bool HasSettled(const EntryFile& file)
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    const long long age = (now.tv_sec - file.changed.tv_sec) * 1'000'000'000LL + (now.tv_nsec - file.changed.tv_nsec);
    return age > kClockTickNanoseconds;
}

std::string FindProgram(const std::string& name)
{
    char* path = g_find_program_in_path(name.c_str());
    std::string found = path != nullptr ? path : "";
    g_free(path);
    return found;
}

/// How the child is to differ from this process.
class ChildSetup {
public:
    explicit ChildSetup(const std::string& workingFolder)
    {
        posix_spawnattr_init(&attributes_);
        sigset_t signals;
        sigfillset(&signals);
        posix_spawnattr_setsigdefault(&attributes_, &signals);
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&attributes_, &signals);
        // A group of its own keeps a terminal's signals away. A session would too, but brings a
        // scheduling group along, in which the program's first run waits behind all others.
        posix_spawnattr_setpgroup(&attributes_, 0);
        posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);

        posix_spawn_file_actions_init(&actions_);
        posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDWR, 0);
        posix_spawn_file_actions_adddup2(&actions_, STDIN_FILENO, STDOUT_FILENO);
        posix_spawn_file_actions_adddup2(&actions_, STDIN_FILENO, STDERR_FILENO);
        posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
        if (!workingFolder.empty()) {
            posix_spawn_file_actions_addchdir_np(&actions_, workingFolder.c_str());
        }
    }
    ChildSetup(const ChildSetup&) = delete;
    ChildSetup& operator=(const ChildSetup&) = delete;
    ~ChildSetup()
    {
        posix_spawn_file_actions_destroy(&actions_);
        posix_spawnattr_destroy(&attributes_);
    }

    const posix_spawnattr_t* Attributes() const { return &attributes_; }
    const posix_spawn_file_actions_t* Actions() const { return &actions_; }

private:
    posix_spawnattr_t attributes_{};
    posix_spawn_file_actions_t actions_{};
};

/// Returns 0 or the errno.
int Spawn(const std::string& program, DesktopEntry& entry, pid_t& pid)
{
    const ChildSetup setup(entry.workingFolder);
    std::vector<char*> arguments;
    for (std::string& argument : entry.arguments) {
        arguments.push_back(argument.data());
    }
    arguments.push_back(nullptr);
    return posix_spawn(&pid, program.c_str(), setup.Actions(), setup.Attributes(), arguments.data(),
                       EnvironmentToHandOn().data());
}

} // namespace

int Launcher::Launch(const char* id)
{
    if (!IsValidId(id)) {
        PLATFORM_LOG(DLOG_ERROR, "not an application id: \"%s\"", id != nullptr ? id : "");
        return kLaunchBadId;
    }
    std::optional<EntryFile> file = FindEntryFile(id);
    if (!file) {
        PLATFORM_LOG(DLOG_ERROR, "no entry \"%s.desktop\" in %s", id, EntryFolders().c_str());
        return kLaunchNoEntry;
    }
    if (!Knows(*file)) {
        const int error = Take(std::move(*file));
        if (error != 0) {
            return error;
        }
    }
    if (entry_.hidden) {
        PLATFORM_LOG(DLOG_ERROR, "no entry \"%s.desktop\": %s hides it", id, file_.path.c_str());
        return kLaunchNoEntry;
    }
    return Start();
}

bool Launcher::Knows(const EntryFile& file) const
{
    return settled_ && file == file_;
}

int Launcher::Take(EntryFile file)
{
    settled_ = false;
    const bool settled = HasSettled(file); // asked before the content is read
    std::string problem;
    std::optional<DesktopEntry> entry = ReadEntry(file, problem);
    if (!entry) {
        PLATFORM_LOG(DLOG_ERROR, "%s: %s", file.path.c_str(), problem.c_str());
        return kLaunchBadEntry;
    }
    file_ = std::move(file);
    entry_ = std::move(*entry);
    program_.clear();
    settled_ = settled;
    return 0;
}

int Launcher::Start()
{
    if (!entry_.tryProgram.empty() && FindProgram(entry_.tryProgram).empty()) {
        PLATFORM_LOG(DLOG_ERROR, "%s: not installed: no program %s (TryExec)", file_.path.c_str(),
                     entry_.tryProgram.c_str());
        return kLaunchNoProgram;
    }
    pid_t pid = -1;
    int error = program_.empty() ? ENOENT : Spawn(program_, entry_, pid);
    if (error == ENOENT || error == EACCES) {
        program_ = FindProgram(entry_.arguments.front());
        if (program_.empty()) {
            PLATFORM_LOG(DLOG_ERROR, "%s: program missing: %s", file_.path.c_str(), entry_.arguments.front().c_str());
            return kLaunchNoProgram;
        }
        error = Spawn(program_, entry_, pid);
    }
    if (error != 0) {
        struct stat status {};
        const bool folderMissing = !entry_.workingFolder.empty() && stat(entry_.workingFolder.c_str(), &status) == -1;
        PLATFORM_LOG(DLOG_ERROR, "%s: cannot start %s%s%s: %s", file_.path.c_str(), program_.c_str(),
                     folderMissing ? " in " : "", folderMissing ? entry_.workingFolder.c_str() : "",
                     ErrorText(error).c_str());
        return kLaunchNotStarted;
    }
    return pid;
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
