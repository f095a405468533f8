#pragma once

#include <string>

namespace desktop {

/// Where an entry's program lies: a bare name is looked for beside this program first, for what was
/// installed with it belongs to it, then in the PATH. Empty when there is none that may be run.
std::string FindProgram(const std::string& name);

} // namespace desktop
