#pragma once

#include <string>
#include <vector>

#include "Diagnostics/Programme/Programme.h"
#include "Diagnostics/Text/Json.h"

/// A programme in words and as JSON. Texts are not escaped for a terminal; those in JSON are UTF-8.
namespace schedule {

/// A text names at most so many periods.
constexpr std::size_t kMostNumbers = 8;

/// "period 2", "periods 1, 2 and 3". Of more than `kMostNumbers` the last are only counted: `count` is the
/// number of all, of which `numbers` has at least the first `kMostNumbers`.
std::string PeriodsText(const std::vector<std::size_t>& numbers, std::size_t count);

/// "period 2, because 10:00:00 <= 10:30:00 < 12:00:00"
std::string Describe(const ActivePeriod& active, int second);

/// "12:00:00 today: period 2 ends, period 3 starts"
std::string Describe(const Change& change);

/// "18:30:00 today: ...", or why nothing changes.
std::string DescribeNext(const Programme& programme);

/// "09:00:00 to 18:30:00", and why it never plays if it does not.
std::string DescribeTimes(const _VQMSchdule& period);

/// "2016-12-31, expired: today is 2026-11-21", "none".
std::string DescribeExpiration(const _VQMPolicy& policy, const Day& today);

/// What a technician should know besides: an overlap, an expired schedule, a state that is not ok.
/// One sentence each.
std::vector<std::string> Notes(const _VQMPolicy& policy, const Programme& programme);

/// One file to play.
Json FileJson(const _VQMContentInfo& content);

/// The expiration date and how it stands to `today`.
Json ExpirationJson(const _VQMPolicy& policy, const Day& today);

/// What plays, why nothing does, and the next change: the members "plays", "idle" and "next".
Json ProgrammeJson(const Programme& programme);

/// The clock that was read.
Json ClockJson(const Clock& clock);

} // namespace schedule
