#pragma once

#include <string>

namespace readiness {

/// Where to look. What is empty is where the application looks; the rest are paths of this machine.
struct Places {
    std::string root{};      ///< the directory below which the TV's files lie; empty: they are this machine's
    std::string constants{}; ///< "-" is stdin
    std::string schedule{};  ///< a file; no constants are needed then
    std::string media{};     ///< a directory
};

} // namespace readiness
