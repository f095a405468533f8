#pragma once

#include <functional>

#include "Diagnostics/Readiness/Places.h"
#include "Tools/ExitCode.h"
#include "Tools/Remote/KeyWatch.h"
#include "Tools/Remote/RemoteKeys.h"
#include "Tools/Remote/RemotePress.h"

/// What the commands do that ask the display or the session bus. `vqmctl` only understands their command
/// line: the program that has the libraries for them, `vqmctl-desktop`, does the work.

struct RemoteActions {
    std::function<ExitCode(const HeldKeysOptions& options)> listKeys;
    std::function<ExitCode(const PressOptions& options)> press;
};

/// On a desktop, `vqmctl` does this itself.
using WatchSettingAction = std::function<ExitCode()>;

using WatchKeysAction = std::function<ExitCode(const WatchKeysOptions& options)>;

struct StatusOptions {
    readiness::Places places;
    bool json = false;
    bool quiet = false;
};
using StatusAction = std::function<ExitCode(const StatusOptions& options)>;
