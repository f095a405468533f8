#pragma once

#include <stdexcept>
#include <string>

#include "Tools/ExitCode.h"

/// Ends a command with one line on stderr and an exit code. The text names the offending value and
/// what was expected; it needs no escaping and no line end.
class CommandError : public std::runtime_error {
public:
    CommandError(ExitCode code, const std::string& text) : std::runtime_error(text), code_(code) {}

    ExitCode Code() const noexcept { return code_; }

private:
    ExitCode code_;
};
