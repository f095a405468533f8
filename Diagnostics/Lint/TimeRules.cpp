#include "Diagnostics/Lint/TimeRules.h"

#include <algorithm>
#include <tuple>

#include "Diagnostics/Calendar/Clock.h"
#include "Diagnostics/Lint/TvConversions.h"
#include "Diagnostics/Text/Words.h"

namespace lint {

namespace {

constexpr char kTimeExpected[] = "hours:minutes:seconds, such as 09:30:00";
constexpr char kDateExpected[] = "year-month-day, such as 2026-12-31";

bool IsDigits(std::string_view text)
{
    return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

std::vector<std::string> SplitAtColons(const std::string& text)
{
    std::vector<std::string> parts(1);
    for (const char character : text) {
        if (character == ':') {
            parts.emplace_back();
        } else {
            parts.back() += character;
        }
    }
    return parts;
}

/// `digits` may be too many for any integer, so their number is compared first.
bool Exceeds(std::string digits, int limit)
{
    digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size()));
    return digits.size() > 4 || tv::Integer(digits) > limit;
}

std::string TvReadsTime(const std::string& text)
{
    return "the TV reads " + tv::TimeText(tv::Time(text));
}

/// What is wrong with the text as such; none when it is a time of day.
std::optional<Problem> JudgeTimeText(const std::string& attribute, const std::string& text)
{
    const auto problem = [&](Rule rule, const std::string& what) {
        return Problem{rule, attribute + " " + QuotedShort(text) + " " + what, kTimeExpected, TvReadsTime(text)};
    };
    const std::vector<std::string> parts = SplitAtColons(text);
    if (parts.size() == 1 || parts.size() > 3 || parts[0].empty()) {
        return problem(Rule::kTimeMalformed, text.empty() ? "is empty" : "is not a time of day");
    }
    static const std::vector<std::string> kPartNames = {"hour", "minute", "second"};
    static const std::vector<int> kLimits = {24, 59, 59};
    for (std::size_t index = 0; index < parts.size(); ++index) {
        // The last part may be empty: the TV reads "09:30:" as meant, and "09:" is reported for its seconds.
        if (!IsDigits(parts[index]) && (index + 1 < parts.size() || !parts[index].empty())) {
            return problem(Rule::kTimeNotDigits, "has a " + kPartNames[index] + " that is not digits only");
        }
    }
    for (std::size_t index = 0; index < parts.size(); ++index) {
        if (Exceeds(parts[index], kLimits[index])) {
            return Problem{Rule::kTimeOutOfRange,
                           attribute + " " + QuotedShort(text) + " has a " + kPartNames[index] + " out of range",
                           "a " + kPartNames[index] + " up to " + std::to_string(kLimits[index]), TvReadsTime(text)};
        }
    }
    if (parts.size() == 2) {
        Problem withoutSeconds = problem(Rule::kTimeWithoutSeconds, "has no seconds");
        // "09:3" may have lost a digit.
        if (parts[1].size() == 2) {
            withoutSeconds.meant = text + ":00";
        }
        return withoutSeconds;
    }
    return std::nullopt;
}

bool HasTwoDigitParts(const std::string& text)
{
    const std::vector<std::string> parts = SplitAtColons(text);
    return std::all_of(parts.begin(), parts.end(), [](const std::string& part) { return part.size() == 2; });
}

bool IsStrictDate(const std::string& text)
{
    return text.size() == 10 && text[4] == '-' && text[7] == '-' &&
           IsDigits(text.substr(0, 4) + text.substr(5, 2) + text.substr(8, 2));
}

/// Like "2016/12/31": the digits stand where the TV reads them.
bool HasOtherSeparators(const std::string& text)
{
    return text.size() == 10 && IsDigits(text.substr(0, 4) + text.substr(5, 2) + text.substr(8, 2)) &&
           !IsDigits(text.substr(4, 1)) && !IsDigits(text.substr(7, 1));
}

schedule::Day ToDay(const _VQMTime& date)
{
    return {date.nYear, date.nMonth, date.nDay};
}

} // namespace

TimeVerdict JudgeTime(const std::string& attribute, const std::string& text)
{
    TimeVerdict verdict;
    if (std::optional<Problem> problem = JudgeTimeText(attribute, text)) {
        verdict.problems.push_back(*std::move(problem));
        return verdict;
    }
    const _VQMTime time = tv::Time(text);
    verdict.seconds = (time.nHour * 60 + time.nMinute) * 60 + time.nSecond;
    const bool isStart = attribute == "start_time";
    if (time.nHour == 24 && (isStart || *verdict.seconds > schedule::kDaySeconds)) {
        verdict.problems.push_back({Rule::kTimeAfterMidnight,
                                    attribute + " " + QuotedShort(text) + " lies after the end of the day",
                                    isStart ? "a time up to 23:59:59" : "a time up to 24:00:00",
                                    TvReadsTime(text) + ", which no clock reaches"});
    } else if (time.nHour == 24) {
        verdict.problems.push_back({Rule::kHour24, attribute + " " + QuotedShort(text) + " has hour 24",
                                    "23:59:59, where the last second does not matter",
                                    TvReadsTime(text) + ", the end of the day"});
    }
    if (!HasTwoDigitParts(text)) {
        verdict.problems.push_back({Rule::kTimeStyle,
                                    attribute + " " + QuotedShort(text) + " is not in two-digit parts", kTimeExpected,
                                    TvReadsTime(text)});
    }
    return verdict;
}

std::vector<Problem> JudgeDate(const std::string& attribute, const std::string& text, const schedule::Day& today)
{
    std::vector<Problem> problems;
    const _VQMTime taken = tv::Date(text);
    const std::string takes = "the TV reads " + tv::DateText(taken);
    const std::string subject = attribute + " " + QuotedShort(text);
    if (HasOtherSeparators(text) && !IsStrictDate(text)) {
        problems.push_back({Rule::kDateStyle, subject + " has other separators than '-'", kDateExpected, takes});
    } else if (!IsStrictDate(text)) {
        problems.push_back({Rule::kDateNotYearMonthDay,
                            subject + (text.empty() ? " is empty" : " is not year-month-day"), kDateExpected, takes});
        return problems;
    }
    const schedule::Day day = ToDay(taken);
    if (!schedule::IsPossible(day)) {
        problems.push_back({Rule::kImpossibleDate, subject + " is not a day of the calendar", "a day that exists",
                            takes + " as it stands"});
    } else if (std::tie(day.year, day.month, day.day) < std::tie(today.year, today.month, today.day)) {
        problems.push_back({Rule::kExpired, subject + " has passed", "a day from " + schedule::DayText(today) + " on",
                            "the TV keeps the date and does not act on it"});
    }
    return problems;
}

} // namespace lint
