#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

namespace status {

/// A process of the application.
struct ApplicationProcess {
    pid_t pid = 0;
    uid_t user = 0;
    bool stopped = false;  ///< by a signal or a debugger
    std::string display;   ///< its DISPLAY; empty when it has none, or may not be looked into
    std::string authority; ///< its XAUTHORITY; the same
};

/// What the kernel lists of the application.
struct ApplicationProcesses {
    bool complete = false; ///< other users' processes are listed too
    std::vector<ApplicationProcess> processes;
};

/// `proc`: where the kernel's list of processes is.
ApplicationProcesses FindApplicationProcesses(const std::string& proc = "/proc");

/// The displays that these processes name, each once.
std::vector<std::string> DisplaysOf(const std::vector<ApplicationProcess>& processes);

} // namespace status
