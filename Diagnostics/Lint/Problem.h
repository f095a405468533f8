#pragma once

#include <string>

#include "Diagnostics/Lint/Rule.h"

namespace lint {

/// What is wrong with something, without its place.
struct Problem {
    Rule rule = Rule::kCount;
    std::string message;
    std::string expected;
    std::string effect;
    std::string meant{}; ///< all that should stand in this place; empty where there is doubt
};

} // namespace lint
