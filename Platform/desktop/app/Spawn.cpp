#include "Platform/desktop/app/Spawn.h"

#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>

#include "Platform/desktop/environment/OwnEnvironment.h"

namespace desktop {

namespace {

/// How the child is to differ from this process.
class ChildSetup {
public:
    explicit ChildSetup(const std::string& workingFolder)
    {
        posix_spawnattr_init(&attributes_);
        // Ignored and blocked signals are inherited otherwise.
        sigset_t signals;
        sigfillset(&signals);
        posix_spawnattr_setsigdefault(&attributes_, &signals);
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&attributes_, &signals);
        // Its own process group keeps a terminal's signals away. A session would do so too, but it brings
        // a scheduling group along, in which the program's first run waits behind all others.
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

} // namespace

Result<pid_t> Spawn(const std::string& program, std::vector<std::string> arguments, const std::string& workingFolder)
{
    const ChildSetup setup(workingFolder);
    std::vector<char*> pointers;
    for (std::string& argument : arguments) {
        pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);
    pid_t pid = -1;
    const int error = posix_spawn(&pid, program.c_str(), setup.Actions(), setup.Attributes(), pointers.data(),
                                  EnvironmentToHandOn().data());
    if (error != 0) {
        return SystemError(program, error);
    }
    return pid;
}

} // namespace desktop
