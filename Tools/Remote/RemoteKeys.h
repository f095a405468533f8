#pragma once

#include "Tools/ExitCode.h"

/// Prints the keys that the application holds on the display that DISPLAY names, a line each, and
/// complains about those that another program has taken. Throws `CommandError` when it does not run there.
ExitCode ListHeldKeys();
