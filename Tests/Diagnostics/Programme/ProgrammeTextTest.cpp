#include "Diagnostics/Programme/ProgrammeText.h"

#include <numeric>
#include <string>
#include <vector>

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace schedule {

namespace {

constexpr Day kToday = {2026, 11, 21};

_VQMTime Time(int hour, int minute = 0, int second = 0)
{
    return {0, 0, 0, hour, minute, second, 0};
}

_VQMSchdule Period(const _VQMTime& start, const _VQMTime& end)
{
    return {start, end, {{"id", "file.mp4", 12, "mp4", 1}}};
}

TEST(ProgrammeText, APeriodPlaysBecauseOfItsTimes)
{
    const _VQMSchdule period = Period(Time(10), Time(24));
    EXPECT_EQ(Describe(ActivePeriod{2, &period, {}}, 37800), "period 2, because 10:00:00 <= 10:30:00 < 24:00:00");
}

TEST(ProgrammeText, AChangeNamesItsPeriods)
{
    std::vector<std::size_t> eight(8);
    std::iota(eight.begin(), eight.end(), 1);
    std::vector<std::size_t> many(500);
    std::iota(many.begin(), many.end(), 1);
    const std::pair<Change, const char*> cases[] = {
        {{43200, false, {3}, {2}}, "12:00:00 today: period 2 ends, period 3 starts"},
        {{43200, false, {3}, {}}, "12:00:00 today: period 3 starts"},
        {{0, true, {}, {1, 2}}, "00:00:00 tomorrow: periods 1 and 2 end"},
        {{1, true, {1, 4, 5}, {}}, "00:00:01 tomorrow: periods 1, 4 and 5 start"},
        {{1, false, eight, {}}, "00:00:01 today: periods 1, 2, 3, 4, 5, 6, 7 and 8 start"},
        {{1, false, many, {}}, "00:00:01 today: periods 1, 2, 3, 4, 5, 6, 7 and 493 more start"},
    };
    for (const auto& [change, text] : cases) {
        EXPECT_EQ(Describe(change), text);
    }
}

TEST(ProgrammeText, WithoutAChangeItSaysWhatStays)
{
    Programme programme;
    EXPECT_EQ(DescribeNext(programme), "never: nothing plays at any time");
    programme.active.resize(1);
    EXPECT_EQ(DescribeNext(programme), "never: the same plays all day");
    programme.next = Change{3600, true, {1}, {}};
    EXPECT_EQ(DescribeNext(programme), "01:00:00 tomorrow: period 1 starts");
}

TEST(ProgrammeText, APeriodThatNeverPlaysSaysWhy)
{
    const std::pair<_VQMSchdule, const char*> cases[] = {
        {Period(Time(9), Time(18, 30)), "09:00:00 to 18:30:00"},
        {Period(Time(0), Time(24, 59, 59)), "00:00:00 to 24:59:59"},
        {Period(Time(9), Time(9)), "09:00:00 to 09:00:00, never plays: it does not start before its end"},
        {Period(Time(22), Time(2)), "22:00:00 to 02:00:00, never plays: it does not start before its end"},
        {Period(Time(24), Time(24, 30)), "24:00:00 to 24:30:00, never plays: no clock shows its start"},
    };
    for (const auto& [period, text] : cases) {
        EXPECT_EQ(DescribeTimes(period), text);
    }
}

TEST(ProgrammeText, AnExpirationDateSaysWhetherItHasPassed)
{
    const std::pair<_VQMTime, const char*> cases[] = {
        {{}, "none"},
        {{2016, 12, 31, 0, 0, 0, 0}, "2016-12-31, expired: today is 2026-11-21"},
        {{2026, 11, 21, 0, 0, 0, 0}, "2026-11-21"},
        {{2016, 23, 0, 0, 0, 0, 0}, "2016-23-00, which is not a day of the calendar"},
    };
    for (const auto& [date, text] : cases) {
        _VQMPolicy policy;
        policy.stExpiration = date;
        EXPECT_EQ(DescribeExpiration(policy, kToday), text);
    }
}

TEST(ProgrammeText, NotesTellWhatElseIsOdd)
{
    _VQMPolicy policy;
    policy.bError = false;
    policy.listSchedule = {Period(Time(9), Time(12)), Period(Time(12), Time(13)), Period(Time(11), Time(12))};
    const Moment moment = {kToday, 11 * 3600};
    EXPECT_THAT(Notes(policy, ProgrammeAt(policy, {kToday, 12 * 3600})), IsEmpty());
    policy.stExpiration = {2026, 11, 21, 0, 0, 0, 0};
    EXPECT_THAT(Notes(policy, ProgrammeAt(policy, moment)),
                ElementsAre("periods 1 and 3 overlap at this time; the TV has all of them"));
    policy.bError = true;
    policy.stExpiration = {2026, 11, 20, 0, 0, 0, 0};
    EXPECT_THAT(Notes(policy, ProgrammeAt(policy, moment)),
                ElementsAre("periods 1 and 3 overlap at this time; the TV has all of them",
                            "the document does not say that its state is \"ok\"; the TV reads it all the same",
                            "the schedule expired on 2026-11-20; the TV keeps the date and does not act on it"));
    policy.stExpiration = {2026, 2, 30, 0, 0, 0, 0};
    EXPECT_EQ(Notes(policy, ProgrammeAt(policy, moment)).back(),
              "the schedule expires on 2026-02-30, which is not a day of the calendar");
}

TEST(ProgrammeText, JsonHoldsTheWholeProgramme)
{
    _VQMPolicy policy;
    policy.listSchedule = {Period(Time(9), Time(12)), Period(Time(22), Time(2))};
    policy.listSchedule.front().listContents.front().strName = "caf\xe9\x1b.mp4";
    EXPECT_EQ(ProgrammeJson(ProgrammeAt(policy, {kToday, 9 * 3600})), Json::parse(R"({
        "plays": [{"period": 1, "start": "09:00:00", "end": "12:00:00", "files": [
            {"order": 1, "id": "id", "name": "caf\\xe9\\x1b.mp4", "format": "mp4", "size": 12}]}],
        "idle": null,
        "next": {"time": "12:00:00", "tomorrow": false, "ending": [1], "starting": []}})"));
    policy.listSchedule.pop_front();
    EXPECT_EQ(ProgrammeJson(ProgrammeAt(policy, {kToday, 0})), Json::parse(R"({
        "plays": [],
        "idle": {"reason": "never-plays", "text": "no period of the schedule starts before its end"},
        "next": null})"));
}

} // namespace

} // namespace schedule
