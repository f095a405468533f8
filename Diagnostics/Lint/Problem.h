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
};

} // namespace lint
