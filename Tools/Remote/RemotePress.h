#pragma once

#include <string>

#include "Tools/ExitCode.h"

struct PressOptions {
    std::string key; ///< the name of a keysym
    int times = 1;
    int holdMilliseconds = 50;
    int waitMilliseconds = 2000; ///< for the application to hold the key
    bool anyway = false;         ///< press it even when the application does not hold it
};

/// Presses and releases a key on the display that DISPLAY names, and waits a few seconds until the application
/// has read it. Returns `kFindings` when it holds the key and does not read it. Throws `CommandError` when there
/// is no such key, the application does not hold it, or it cannot be pressed.
ExitCode PressRemoteKey(const PressOptions& options);
