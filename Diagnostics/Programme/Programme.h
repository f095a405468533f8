#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "Data/VQMScheduleRecords.h"
#include "Diagnostics/Calendar/Clock.h"

/// What a schedule means at a moment. Everything here is computed from a policy and a moment alone;
/// what points into the policy is valid as long as the policy is unchanged.
namespace schedule {

/// The items of all periods.
std::size_t CountItems(const _VQMPolicy& policy);

/// Seconds from midnight, whatever the fields hold; up to 24:59:59 from a document.
long long SecondsOf(const _VQMTime& time);

/// The part of the day in which a period plays, from `start` up to but not including `end`.
///
/// No clock shows 24:00:00 or later: the day cuts both ends to its own.
struct Span {
    int start = 0;
    int end = 0;

    /// Whether it never plays: it does not start before its end, or not on any clock.
    bool IsEmpty() const { return start >= end; }
    bool Contains(int second) const { return start <= second && second < end; }
};

Span SpanOf(const _VQMSchdule& period);

/// The period's files by their `order`, equal ones in document order. The document order alone
/// says nothing: `order` is the play position.
std::vector<const _VQMContentInfo*> PlayOrder(const _VQMSchdule& period);

/// A period that plays at a moment.
struct ActivePeriod {
    std::size_t number = 0; ///< its place in the document, from 1
    const _VQMSchdule* period = nullptr;
    std::vector<const _VQMContentInfo*> files; ///< in play order
};

/// When something else plays: the first moment at which a period starts or ends.
///
/// A period that ends at midnight and starts again there goes on. Periods have no date, so each day
/// is like the other.
struct Change {
    int second = 0; ///< of the day; midnight is 0 of the next one
    bool tomorrow = false;
    std::vector<std::size_t> starting; ///< numbers of periods, in document order
    std::vector<std::size_t> ending;
};

/// Why no file plays.
enum class IdleReason {
    kNoPeriods,      ///< the schedule has none
    kNeverPlays,     ///< none of its periods plays at any time
    kBetweenPeriods, ///< some do, but not at this moment
    kNoFiles,        ///< the periods of this moment have no files
};

/// "no-periods" and so on, for programs.
std::string NameOf(IdleReason idleReason);

/// The same for people: "the schedule has no periods".
std::string Describe(IdleReason idleReason);

/// How a schedule's expiration date stands to a day. The library keeps the date and does not act on
/// it.
enum class Expiry {
    kNone,       ///< no date, or none that was readable
    kImpossible, ///< no day of the calendar
    kValid,      ///< the day is the last one, or an earlier one
    kExpired,    ///< the day comes after it
};

std::string NameOf(Expiry expiry);

Expiry ExpiryOn(const _VQMPolicy& policy, const Day& day);

/// The expiration date as the library read it.
Day ExpirationOf(const _VQMPolicy& policy);

struct Programme {
    std::vector<ActivePeriod> active;     ///< in document order; more than one where periods overlap
    std::optional<IdleReason> idleReason; ///< set when no file plays
    std::optional<Change> next;           ///< none when the same plays all day
    bool stateIsOk = false;               ///< the document says that it is "ok"; the library does not act on it
    Expiry expiry = Expiry::kNone;
};

Programme ProgrammeAt(const _VQMPolicy& policy, const Moment& moment);

} // namespace schedule
