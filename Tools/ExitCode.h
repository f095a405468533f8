#pragma once

/// What a command tells the shell.
enum class ExitCode : int {
    kOk = 0,
    kFindings = 1,    ///< it ran, and the answer is no: not ready, the application does not hold the key
    kUsage = 2,       ///< the command line was not understood
    kCouldNotRun = 3, ///< what it needs is missing or refused
};
