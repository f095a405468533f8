#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

namespace desktop {

/// Starts a program that lives on its own: a process group of its own, the environment as this
/// process found it, no descriptor and no signal setting of ours. Its standard streams are
/// /dev/null: it may outlive us or write without end, and our output's reader must notice neither.
///
/// `arguments` begin with the program's name; `workingFolder` may be empty, for this process's.
/// Returns 0 and the pid, or the errno. The caller's process reaps the child.
int Spawn(const std::string& program, std::vector<std::string> arguments, const std::string& workingFolder, pid_t& pid);

} // namespace desktop
