#pragma once

#include <string>
#include <sys/types.h>

/// Starts a command of the shell on the TV's display, with the environment that this program was started
/// with. The toolkit reaps it. Returns how it went, in one sentence.
std::string StartApplication(const std::string& command, const std::string& display);

/// Asks the application to end. Returns how it went, in one sentence.
std::string EndApplication(pid_t process);
