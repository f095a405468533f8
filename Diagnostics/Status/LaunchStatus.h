#pragma once

#include <string>

namespace status {

/// What the application would start when a tool key is released. Texts are not escaped.
struct LaunchStatus {
    enum class State {
        kUnknown,
        kReady,
        kNoEntry,   ///< no desktop entry, or one that is hidden
        kBadEntry,  ///< the entry cannot be read or makes no sense
        kNoProgram, ///< the entry's program is missing, or may not be run
    };

    State state = State::kUnknown;
    std::string companion; ///< its id
    std::string entry;     ///< the file that names the program; empty: none
    std::string program;   ///< as the entry names it, or where it lies when it is there
    std::string problem;   ///< empty when it is ready
};

/// "ready" and so on, for programs.
std::string NameOf(LaunchStatus::State state);

/// Looks where the application looks, in this process's environment.
LaunchStatus CollectLaunch();

} // namespace status
