#include "Diagnostics/Calendar/Clock.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <system_error>

#include "Diagnostics/Text/Words.h"

namespace schedule {

namespace {

/// Of two characters: a number up to `limit`.
std::optional<int> ParsePart(const std::string& digits, int limit)
{
    if (digits.find_first_not_of("0123456789") != std::string::npos) {
        return std::nullopt;
    }
    const int number = (digits[0] - '0') * 10 + (digits[1] - '0');
    return number <= limit ? std::optional<int>(number) : std::nullopt;
}

/// A zone's name and its distance from UTC, such as "CET-1CEST" or "<+0545>-5:45".
bool IsZoneRule(std::string_view value)
{
    constexpr char kLetters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    constexpr std::size_t kShortestName = 3; // as POSIX asks
    // Without a '>', `find` + 1 wraps around to 0, which is too short.
    const std::size_t nameEnd = value.front() == '<' ? value.find('>') + 1 : value.find_first_not_of(kLetters);
    if (nameEnd < kShortestName || nameEnd == std::string_view::npos) {
        return false;
    }
    const std::size_t digits = value.find_first_not_of("+-", nameEnd);
    return digits <= nameEnd + 1 && digits < value.size() && value[digits] >= '0' && value[digits] <= '9';
}

std::filesystem::path ZoneDatabase()
{
    const char* const place = std::getenv("TZDIR");
    return place != nullptr && *place != '\0' ? place : "/usr/share/zoneinfo";
}

} // namespace

bool IsTimeZone(std::string_view value)
{
    if (!value.empty() && value.front() == ':') {
        value.remove_prefix(1); // the C library skips it
    }
    // These need no database.
    if (value.empty() || value == "UTC" || value == "GMT" || IsZoneRule(value)) {
        return true;
    }
    std::error_code ignored;
    // An absolute `value` replaces the whole path.
    return std::filesystem::is_regular_file(ZoneDatabase() / value, ignored);
}

Clock ReadClock()
{
    const std::time_t now = std::time(nullptr);
    std::tm local = {};
    localtime_r(&now, &local);
    Clock clock;
    clock.now.day = {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday};
    // A leap second is taken for the last second of its day.
    clock.now.second = std::min((local.tm_hour * 60 + local.tm_min) * 60 + local.tm_sec, kDaySeconds - 1);
    const char* const variable = std::getenv("TZ");
    if (variable != nullptr && !IsTimeZone(variable)) {
        clock.unknownZone = variable;
        clock.zone = "UTC";
        return clock;
    }
    clock.zone = local.tm_zone != nullptr ? local.tm_zone : "";
    clock.offset = static_cast<int>(local.tm_gmtoff);
    return clock;
}

std::string ZoneText(const Clock& clock)
{
    const int minutes = std::abs(clock.offset) / 60;
    return clock.zone + " (UTC" + (clock.offset < 0 ? "-" : "+") + TwoDigits(minutes / 60) + ":" +
           TwoDigits(minutes % 60) + ")" +
           (clock.unknownZone.empty() ? "" : ", because TZ is " + Quoted(clock.unknownZone) + ", an unknown zone");
}

std::string TimeText(long long seconds)
{
    return TwoDigits(seconds / 3600) + ":" + TwoDigits(seconds / 60 % 60) + ":" + TwoDigits(seconds % 60);
}

std::optional<int> ParseTimeOfDay(const std::string& text)
{
    constexpr std::size_t kWithoutSeconds = 5;
    constexpr std::size_t kWithSeconds = 8;
    if (text.size() == kWithoutSeconds) {
        return ParseTimeOfDay(text + ":00");
    }
    if (text.size() != kWithSeconds || text[2] != ':' || text[5] != ':') {
        return std::nullopt;
    }
    const std::optional<int> hour = ParsePart(text.substr(0, 2), 23);
    const std::optional<int> minute = ParsePart(text.substr(3, 2), 59);
    const std::optional<int> second = ParsePart(text.substr(6, 2), 59);
    if (!hour || !minute || !second) {
        return std::nullopt;
    }
    return (*hour * 60 + *minute) * 60 + *second;
}

} // namespace schedule
