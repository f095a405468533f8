#include "Diagnostics/Programme/ProgrammeText.h"

#include <algorithm>

namespace schedule {

namespace {

/// "period 2 ends", "periods 1, 2 and 3 overlap".
std::string Sentence(const std::vector<std::size_t>& numbers, const std::string& one, const std::string& several)
{
    return PeriodsText(numbers, numbers.size()) + " " + (numbers.size() == 1 ? one : several);
}

std::string PeriodTime(const _VQMTime& time)
{
    return TimeText(SecondsOf(time));
}

Json ChangeJson(const Change& change)
{
    return {{"time", TimeText(change.second)},
            {"tomorrow", change.tomorrow},
            {"ending", change.ending},
            {"starting", change.starting}};
}

} // namespace

std::string PeriodsText(const std::vector<std::size_t>& numbers, std::size_t count)
{
    if (count == 1) {
        return "period " + std::to_string(numbers.front());
    }
    const std::size_t shown = count <= kMostNumbers ? count : kMostNumbers - 1;
    std::string text = "periods ";
    for (std::size_t index = 0; index < shown; ++index) {
        text += index == 0 ? "" : index + 1 == count ? " and " : ", ";
        text += std::to_string(numbers[index]);
    }
    return shown == count ? text : text + " and " + std::to_string(count - shown) + " more";
}

std::string Describe(const ActivePeriod& active, int second)
{
    return "period " + std::to_string(active.number) + ", because " + PeriodTime(active.period->stStartTime) +
           " <= " + TimeText(second) + " < " + PeriodTime(active.period->stEndTime);
}

std::string Describe(const Change& change)
{
    std::string text = TimeText(change.second) + (change.tomorrow ? " tomorrow: " : " today: ");
    if (!change.ending.empty()) {
        text += Sentence(change.ending, "ends", "end");
    }
    if (!change.starting.empty()) {
        text += (change.ending.empty() ? "" : ", ") + Sentence(change.starting, "starts", "start");
    }
    return text;
}

std::string DescribeNext(const Programme& programme)
{
    if (programme.next) {
        return Describe(*programme.next);
    }
    return programme.active.empty() ? "never: nothing plays at any time" : "never: the same plays all day";
}

std::string DescribeTimes(const _VQMSchdule& period)
{
    std::string text = PeriodTime(period.stStartTime) + " to " + PeriodTime(period.stEndTime);
    if (SpanOf(period).IsEmpty()) {
        const bool backwards = SecondsOf(period.stStartTime) >= SecondsOf(period.stEndTime);
        text +=
            backwards ? ", never plays: it does not start before its end" : ", never plays: no clock shows its start";
    }
    return text;
}

std::string DescribeExpiration(const _VQMPolicy& policy, const Day& today)
{
    std::string date = DayText(ExpirationOf(policy));
    switch (ExpiryOn(policy, today)) {
    case Expiry::kNone:
        return "none";
    case Expiry::kImpossible:
        return date + ", which is not a day of the calendar";
    case Expiry::kValid:
        return date;
    case Expiry::kExpired:
        return date + ", expired: today is " + DayText(today);
    }
    return "";
}

std::vector<std::string> Notes(const _VQMPolicy& policy, const Programme& programme)
{
    std::vector<std::string> notes;
    if (programme.active.size() > 1) {
        std::vector<std::size_t> numbers;
        for (const ActivePeriod& active : programme.active) {
            numbers.push_back(active.number);
        }
        notes.push_back(Sentence(numbers, "", "overlap at this time; the TV has all of them"));
    }
    if (!programme.stateIsOk) {
        notes.emplace_back("the document does not say that its state is \"ok\"; the TV reads it all the same");
    }
    const std::string date = DayText(ExpirationOf(policy));
    if (programme.expiry == Expiry::kExpired) {
        notes.push_back("the schedule expired on " + date + "; the TV keeps the date and does not act on it");
    } else if (programme.expiry == Expiry::kImpossible) {
        notes.push_back("the schedule expires on " + date + ", which is not a day of the calendar");
    }
    return notes;
}

Json FileJson(const _VQMContentInfo& content)
{
    return {{"order", content.nOrder},
            {"id", Utf8(content.strID)},
            {"name", Utf8(content.strName)},
            {"format", Utf8(content.strFormat)},
            {"size", content.nSize}};
}

Json ExpirationJson(const _VQMPolicy& policy, const Day& today)
{
    const Expiry expiry = ExpiryOn(policy, today);
    return {{"status", NameOf(expiry)},
            {"date", expiry == Expiry::kNone ? Json() : Json(DayText(ExpirationOf(policy)))}};
}

Json ProgrammeJson(const Programme& programme)
{
    Json json = {{"plays", Json::array()}, {"idle", nullptr}, {"next", nullptr}};
    for (const ActivePeriod& active : programme.active) {
        Json period = {{"period", active.number},
                       {"start", PeriodTime(active.period->stStartTime)},
                       {"end", PeriodTime(active.period->stEndTime)},
                       {"files", Json::array()}};
        for (const _VQMContentInfo* file : active.files) {
            period["files"].push_back(FileJson(*file));
        }
        json["plays"].push_back(std::move(period));
    }
    if (programme.idleReason) {
        json["idle"] = {{"reason", NameOf(*programme.idleReason)}, {"text", Describe(*programme.idleReason)}};
    }
    if (programme.next) {
        json["next"] = ChangeJson(*programme.next);
    }
    return json;
}

Json ClockJson(const Clock& clock)
{
    return {{"day", DayText(clock.now.day)},
            {"time", TimeText(clock.now.second)},
            {"zone", Utf8(clock.zone)},
            {"zone_known", clock.unknownZone.empty()},
            {"utc_offset", clock.offset}};
}

} // namespace schedule
