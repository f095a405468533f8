#include "Diagnostics/Calendar/Day.h"

#include <charconv>
#include <string_view>

#include "Diagnostics/Text/Words.h"

namespace schedule {

namespace {

std::optional<int> ParseDigits(std::string_view digits)
{
    int number = 0;
    const bool onlyDigits = digits.find_first_not_of("0123456789") == std::string_view::npos;
    std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return onlyDigits ? std::optional(number) : std::nullopt;
}

} // namespace

bool IsPossible(const Day& day)
{
    static constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (day.year < 1 || day.month < 1 || day.month > 12 || day.day < 1) {
        return false;
    }
    const bool leapYear = (day.year % 4 == 0 && day.year % 100 != 0) || day.year % 400 == 0;
    return day.day <= kDays[day.month - 1] + (day.month == 2 && leapYear ? 1 : 0);
}

std::optional<Day> ParseDay(const std::string& text)
{
    if (text.size() != 10 || text[4] != '-' || text[7] != '-') {
        return std::nullopt;
    }
    const std::string_view view = text;
    const std::optional<int> year = ParseDigits(view.substr(0, 4));
    const std::optional<int> month = ParseDigits(view.substr(5, 2));
    const std::optional<int> number = ParseDigits(view.substr(8, 2));
    if (!year || !month || !number) {
        return std::nullopt;
    }
    const Day day = {*year, *month, *number};
    return IsPossible(day) ? std::optional(day) : std::nullopt;
}

std::string DayText(const Day& day)
{
    return std::to_string(day.year) + "-" + TwoDigits(day.month) + "-" + TwoDigits(day.day);
}

} // namespace schedule
