#pragma once

#include <string>
#include <vector>

#include "Platform/desktop/app/EntryFile.h"
#include "Platform/desktop/base/Result.h"

namespace desktop {

/// What an entry says about starting its program.
struct DesktopEntry {
    bool hidden = false;                ///< to be treated as if it were not there
    std::vector<std::string> arguments; ///< the program first; no field codes left; never empty unless hidden
    std::string tryProgram;             ///< must exist, or the application counts as not installed; may be empty
    std::string workingFolder;          ///< empty: the starter's
};

/// Reads an entry. The problem says why it cannot be read or used.
Result<DesktopEntry> ReadEntry(const EntryFile& file);

} // namespace desktop
