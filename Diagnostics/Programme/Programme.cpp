#include "Diagnostics/Programme/Programme.h"

#include <algorithm>
#include <limits>
#include <tuple>

namespace schedule {

namespace {

int ClippedToDay(const _VQMTime& time)
{
    return static_cast<int>(std::clamp<long long>(SecondsOf(time), 0, kDaySeconds));
}

/// Finds the first change after a moment, one period after the other.
class NextChange {
public:
    explicit NextChange(int second) : second_(second) {}

    void Consider(std::size_t number, const Span& span)
    {
        if (span.IsEmpty() || (span.start == 0 && span.end == kDaySeconds)) {
            return; // never or always playing: nothing changes
        }
        Consider(span.start, number, &Change::starting);
        Consider(span.end % kDaySeconds, number, &Change::ending);
    }

    std::optional<Change> Take() { return std::move(change_); }

private:
    void Consider(int second, std::size_t number, std::vector<std::size_t> Change::*list)
    {
        // What changes at this very second has changed: the next time is tomorrow.
        const int distance = second > second_ ? second - second_ : second + kDaySeconds - second_;
        if (distance > distance_) {
            return;
        }
        if (distance < distance_) {
            distance_ = distance;
            change_ = Change();
            change_->second = second;
            change_->tomorrow = second <= second_;
        }
        ((*change_).*list).push_back(number);
    }

    int second_;
    int distance_ = std::numeric_limits<int>::max();
    std::optional<Change> change_;
};

std::optional<IdleReason> IdleReasonOf(const _VQMPolicy& policy, const std::vector<ActivePeriod>& active)
{
    if (policy.listSchedule.empty()) {
        return IdleReason::kNoPeriods;
    }
    if (std::all_of(policy.listSchedule.begin(), policy.listSchedule.end(),
                    [](const _VQMSchdule& period) { return SpanOf(period).IsEmpty(); })) {
        return IdleReason::kNeverPlays;
    }
    if (active.empty()) {
        return IdleReason::kBetweenPeriods;
    }
    const bool anyFile =
        std::any_of(active.begin(), active.end(), [](const ActivePeriod& period) { return !period.files.empty(); });
    return anyFile ? std::nullopt : std::optional<IdleReason>(IdleReason::kNoFiles);
}

} // namespace

std::size_t CountItems(const _VQMPolicy& policy)
{
    std::size_t items = 0;
    for (const _VQMSchdule& period : policy.listSchedule) {
        items += period.listContents.size();
    }
    return items;
}

long long SecondsOf(const _VQMTime& time)
{
    return (time.nHour * 60LL + time.nMinute) * 60LL + time.nSecond;
}

Span SpanOf(const _VQMSchdule& period)
{
    return {ClippedToDay(period.stStartTime), ClippedToDay(period.stEndTime)};
}

std::vector<const _VQMContentInfo*> PlayOrder(const _VQMSchdule& period)
{
    std::vector<const _VQMContentInfo*> files;
    files.reserve(period.listContents.size());
    for (const _VQMContentInfo& content : period.listContents) {
        files.push_back(&content);
    }
    std::stable_sort(files.begin(), files.end(), [](const _VQMContentInfo* left, const _VQMContentInfo* right) {
        return left->nOrder < right->nOrder;
    });
    return files;
}

std::string NameOf(IdleReason idleReason)
{
    switch (idleReason) {
    case IdleReason::kNoPeriods:
        return "no-periods";
    case IdleReason::kNeverPlays:
        return "never-plays";
    case IdleReason::kBetweenPeriods:
        return "between-periods";
    case IdleReason::kNoFiles:
        return "no-files";
    }
    return "";
}

std::string Describe(IdleReason idleReason)
{
    switch (idleReason) {
    case IdleReason::kNoPeriods:
        return "the schedule has no periods";
    case IdleReason::kNeverPlays:
        return "no period of the schedule starts before its end";
    case IdleReason::kBetweenPeriods:
        return "no period includes this time";
    case IdleReason::kNoFiles:
        return "the period has no files";
    }
    return "";
}

std::string NameOf(Expiry expiry)
{
    switch (expiry) {
    case Expiry::kNone:
        return "none";
    case Expiry::kImpossible:
        return "impossible";
    case Expiry::kValid:
        return "valid";
    case Expiry::kExpired:
        return "expired";
    }
    return "";
}

Expiry ExpiryOn(const _VQMPolicy& policy, const Day& day)
{
    const Day last = ExpirationOf(policy);
    if (last.year == 0 && last.month == 0 && last.day == 0) {
        return Expiry::kNone;
    }
    if (!IsPossible(last)) {
        return Expiry::kImpossible;
    }
    const bool passed = std::tie(last.year, last.month, last.day) < std::tie(day.year, day.month, day.day);
    return passed ? Expiry::kExpired : Expiry::kValid;
}

Day ExpirationOf(const _VQMPolicy& policy)
{
    return {policy.stExpiration.nYear, policy.stExpiration.nMonth, policy.stExpiration.nDay};
}

Programme ProgrammeAt(const _VQMPolicy& policy, const Moment& moment)
{
    Programme programme;
    NextChange next(moment.second);
    std::size_t number = 0;
    for (const _VQMSchdule& period : policy.listSchedule) {
        const Span span = SpanOf(period);
        next.Consider(++number, span);
        if (span.Contains(moment.second)) {
            programme.active.push_back({number, &period, PlayOrder(period)});
        }
    }
    programme.idleReason = IdleReasonOf(policy, programme.active);
    programme.next = next.Take();
    programme.stateIsOk = !policy.bError;
    programme.expiry = ExpiryOn(policy, moment.day);
    return programme;
}

} // namespace schedule
