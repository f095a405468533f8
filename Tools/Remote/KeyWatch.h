#pragma once

#include "Tools/ExitCode.h"

struct WatchKeysOptions {
    bool json = false; ///< a document of Docs/schemas/keys-watch.schema.json on each line
};

/// Prints each press and release of a key on the display that DISPLAY names, and whether the application
/// holds the key, until Ctrl-C, a hang-up, or the end of the reader or the X server. Takes no key from anyone.
/// Throws `CommandError` or `std::runtime_error` when the keys cannot be watched.
ExitCode WatchKeys(const WatchKeysOptions& options);
