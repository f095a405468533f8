#pragma once

#include <string>

namespace desktop {

/// The folder that this program lies in; empty where the system does not say. Found at run time, so
/// that an installation can be moved as a whole.
const std::string& ProgramFolder();

} // namespace desktop
