#include "Diagnostics/Lint/PeriodChecker.h"

#include "Diagnostics/Calendar/Clock.h"
#include "Diagnostics/Lint/TvConversions.h"
#include "Diagnostics/Text/Words.h"

namespace lint {

namespace {

std::string PeriodText(const Period& period)
{
    return schedule::TimeText(period.start) + " to " + schedule::TimeText(period.end);
}

std::optional<int> SecondsOf(const StartTag& tag, const std::vector<Judgement>& values, const char* name)
{
    const std::optional<std::size_t> index = tag.Find(name);
    return index ? values[*index].seconds : std::nullopt;
}

std::string AsOnLine(std::uint64_t line)
{
    return " is that of line " + std::to_string(line) + " too";
}

} // namespace

void PeriodChecker::Begin(const StartTag& schedule, const std::vector<Judgement>& values)
{
    schedule_ = reporter_.Kept(schedule.Whole());
    items_ = 0;
    ForgetItems();
    CheckTimes(schedule, values);
}

void PeriodChecker::CheckTimes(const StartTag& schedule, const std::vector<Judgement>& values)
{
    const std::optional<int> start = SecondsOf(schedule, values, "start_time");
    const std::optional<int> end = SecondsOf(schedule, values, "end_time");
    // Anything else has been reported with the value itself.
    if (!start || !end || *start > schedule::kDaySeconds || *end > schedule::kDaySeconds) {
        return;
    }
    const Period period = {*start, *end, schedule.Start().line};
    if (*start >= *end) {
        reporter_.Report(schedule.ValuePlace(*schedule.Find("end_time")),
                         {Rule::kStartNotBeforeEnd,
                          "the period from " + PeriodText(period) + " does not start before its end",
                          "an end after " + schedule::TimeText(*start) + "; a period over midnight takes two schedules",
                          "the TV never plays it"});
        return;
    }
    if (const std::optional<Period> other = overlaps_.Add(period)) {
        reporter_.Report(schedule_,
                         {Rule::kOverlappingPeriods,
                          "the period from " + PeriodText(period) + " overlaps that of line " +
                              std::to_string(other->line) + " from " + PeriodText(*other),
                          "one period after the other; they may touch", "the TV has both of them in between"});
    }
}

void PeriodChecker::BeginItem(const StartTag& item, const std::vector<Judgement>& values)
{
    ++items_;
    constexpr char kEffect[] = "the TV keeps both items";
    if (const std::optional<std::size_t> id = item.Find("id")) {
        const char* const text = item.AttributeValue(*id);
        if (const auto line = ids_.Add(text, item.Start().line)) {
            reporter_.Report(item.ValuePlace(*id), {Rule::kDuplicateId, "id " + QuotedShort(text) + AsOnLine(*line),
                                                    "a different id for each item of a period", kEffect});
        }
    }
    const std::optional<std::size_t> order = item.Find("order");
    // An order that the TV reads as another number has been reported.
    if (order && values[*order].isReadAsWritten) {
        const std::string text = item.AttributeValue(*order);
        if (const auto line = orders_.Add(tv::Integer(text), item.Start().line)) {
            reporter_.Report(item.ValuePlace(*order),
                             {Rule::kDuplicateOrder, "order " + QuotedShort(text) + AsOnLine(*line),
                              "a different order for each item of a period", kEffect});
        }
    }
}

void PeriodChecker::EndItem(const ItemFacts& item)
{
    if (!item.hasName) {
        return;
    }
    if (const auto line = files_.Add(item.file, item.filePlace.position.line)) {
        reporter_.Report(item.filePlace, {Rule::kDuplicateFile, "the file " + QuotedShort(item.file) + AsOnLine(*line),
                                          "each file once in a period", "the TV keeps both items"});
    }
}

void PeriodChecker::End()
{
    if (items_ == 0) {
        reporter_.Report(schedule_, {Rule::kNoItems, "the schedule has no items", "at least one item",
                                     "the TV plays nothing in this period"});
    }
    ForgetItems();
}

void PeriodChecker::ForgetItems()
{
    ids_.Clear();
    orders_.Clear();
    files_.Clear();
}

} // namespace lint
