#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Diagnostics/Lint/Problem.h"

namespace lint {

/// A day of the calendar.
struct Day {
    int year = 0;
    int month = 0;
    int day = 0;
};

/// Whether there is such a day.
bool IsPossible(const Day& day);

/// "2016-12-31", and nothing else, to a day that exists.
std::optional<Day> ParseDay(const std::string& text);

struct TimeVerdict {
    std::vector<Problem> problems;
    std::optional<int> seconds; ///< of the day, where what is written leaves no doubt
};

/// Judges the text of `start_time` or `end_time`, which is `attribute`.
TimeVerdict JudgeTime(const std::string& attribute, const std::string& text);

/// Judges the text of an expiration date as seen on `today`.
std::vector<Problem> JudgeDate(const std::string& attribute, const std::string& text, const Day& today);

} // namespace lint
