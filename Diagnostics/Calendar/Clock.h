#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Diagnostics/Calendar/Day.h"

namespace schedule {

constexpr int kDaySeconds = 24 * 60 * 60;

/// A second of a day, as a clock on the wall shows it.
struct Moment {
    Day day;
    int second = 0; ///< from midnight, below `kDaySeconds`
};

/// This machine's clock, read once.
struct Clock {
    Moment now;
    std::string zone;          ///< the time zone's short name, such as "CET"
    int offset = 0;            ///< seconds that the zone is ahead of UTC
    std::string unknownZone{}; ///< what TZ holds where that is no zone: the clock is in UTC then
};

/// Reads the clock in the time zone of the process (TZ, else the machine's).
Clock ReadClock();

/// Whether TZ may hold this: the C library takes UTC for what it does not know, and gives it any name.
bool IsTimeZone(std::string_view value);

/// "CET (UTC+01:00)"; of an unknown zone also that it is unknown.
std::string ZoneText(const Clock& clock);

/// "09:30:00"; the end of the day is "24:00:00".
std::string TimeText(long long seconds);

/// "09:30:00" or "09:30", and nothing else, to seconds from midnight.
std::optional<int> ParseTimeOfDay(const std::string& text);

} // namespace schedule
