#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

#include "Platform/desktop/base/Result.h"

namespace desktop {

/// Starts an independent program and returns its pid. It gets its own process group, the environment as
/// this process found it, and none of this process's descriptors and signal settings. Its standard
/// streams are /dev/null: it may outlive this process or write without end, and the reader of this
/// process's output must notice neither.
///
/// `arguments` begin with the program's name; `workingFolder` may be empty, for this process's.
/// The error's code is the errno. The caller's process reaps the child.
Result<pid_t> Spawn(const std::string& program, std::vector<std::string> arguments, const std::string& workingFolder);

} // namespace desktop
