#pragma once

#include "Tools/ExitCode.h"

struct HeldKeysOptions {
    bool keyboardOnly = false; ///< leave out the keys that 'remote press' has lent to the keyboard
};

/// Prints the keys that the application holds on the display that DISPLAY names, a line each, and
/// complains about those that another program has taken. Waits a moment for an application that is
/// starting. Throws `CommandError` when it does not run there.
ExitCode ListHeldKeys(const HeldKeysOptions& options);
