#pragma once

/// What a command tells the shell.
enum class ExitCode : int {
    kOk = 0,
    kFindings = 1,    ///< it ran, and what it looked for is not so: nobody holds the key, not ready
    kUsage = 2,       ///< the command line was not understood
    kCouldNotRun = 3, ///< what it needs is missing or refused
};
