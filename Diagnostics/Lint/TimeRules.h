#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Diagnostics/Calendar/Day.h"
#include "Diagnostics/Lint/Problem.h"

namespace lint {

struct TimeVerdict {
    std::vector<Problem> problems;
    std::optional<int> seconds; ///< of the day, where what is written leaves no doubt
};

/// Judges the text of `start_time` or `end_time`, which is `attribute`.
TimeVerdict JudgeTime(const std::string& attribute, const std::string& text);

/// Judges the text of an expiration date as seen on `today`.
std::vector<Problem> JudgeDate(const std::string& attribute, const std::string& text, const schedule::Day& today);

} // namespace lint
