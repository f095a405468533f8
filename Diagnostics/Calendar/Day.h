#pragma once

#include <optional>
#include <string>

namespace schedule {

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

/// "2026-12-31"
std::string DayText(const Day& day);

} // namespace schedule
