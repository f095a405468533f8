#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "Data/VQMScheduleRecords.h"
#include "Diagnostics/Calendar/Day.h"
#include "Diagnostics/Programme/Programme.h"

/// A whole day of a schedule: what `ProgrammeAt` says, for every second at once.
namespace timeline {

/// A period in the order of the day.
struct DayPeriod {
    std::size_t number = 0; ///< its place in the document, from 1
    const _VQMSchdule* period = nullptr;
    schedule::Span span; ///< empty where the period never plays
};

/// A part of the day in which the same periods play.
struct Stretch {
    schedule::Span span;
    std::size_t count = 0;            ///< how many periods
    std::vector<std::size_t> periods; ///< the numbers of the first of them, in document order, as many as a text names
};

struct Timeline {
    std::string document; ///< what to call it; not escaped
    schedule::Day day;
    std::optional<int> now;           ///< a second of that day; none when it is another day
    std::vector<DayPeriod> periods;   ///< by their start, equal ones in document order
    std::vector<Stretch> overlaps;    ///< where several periods play, in the order of the day
    std::vector<schedule::Span> gaps; ///< where none does
    std::vector<std::string> notes;   ///< what else is odd, one sentence each
};

/// The day `day` of a policy. Points into the policy. The time it takes grows with the number of periods.
Timeline TimelineOf(const _VQMPolicy& policy, std::string document, const schedule::Day& day, std::optional<int> now);

/// "schedule.xml on 2026-11-22"; not escaped.
std::string Title(const Timeline& timeline);

/// "09:00:00 to 10:00:00"
std::string SpanText(const schedule::Span& span);

/// "10:00:00 to 11:00:00: periods 1 and 3"
std::string StretchText(const Stretch& stretch);

/// The names of a period's files in play order, or "no files": "intro.mp4, logo.jpg". Of more than `most`
/// the last are only counted. Not escaped.
std::string FilesText(const _VQMSchdule& period, std::size_t most);

} // namespace timeline
