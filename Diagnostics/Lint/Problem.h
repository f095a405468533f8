#pragma once

#include <string>
#include <string_view>

#include "Diagnostics/Lint/Rule.h"

namespace lint {

/// What is wrong with something, without its place.
struct Problem {
    Rule rule = Rule::kCount;
    std::string message;
    std::string expected;
    std::string effect;
};

/// `text` in single quotes, shortened where it is long.
std::string Quoted(std::string_view text);

} // namespace lint
