#pragma once

#include "Tools/ExitCode.h"

/// Prints the state of the setting now and after each change, until a signal or the end of the reader.
/// Throws `CommandError` when it cannot be watched.
ExitCode WatchSetting();
