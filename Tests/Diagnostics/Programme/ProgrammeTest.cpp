#include "Diagnostics/Programme/Programme.h"

#include <climits>
#include <cstdio>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "Data/VQMScheduleContainer.h"
#include "VQMSerialize/VQMXMLSerialize.h"

using testing::ElementsAre;

namespace schedule {

namespace {

constexpr Day kToday = {2026, 11, 21};

_VQMPolicy Read(const std::string& document)
{
    CVQMScheduleContainer container;
    CVQMXMLSerialize serializer;
    EXPECT_TRUE(serializer.Create() && serializer.Deserialize(document.c_str(), &container)) << document;
    _VQMPolicy policy;
    container.GetSturcture(&policy);
    return policy;
}

struct Times {
    std::string start;
    std::string end;
    std::string items = "<item/>";
};

_VQMPolicy ReadPeriods(const std::vector<Times>& periods)
{
    std::string document = "<rsp state='ok'>";
    for (const Times& times : periods) {
        document += "<schedule start_time='" + times.start + "' end_time='" + times.end + "'>" + times.items;
        document += "</schedule>";
    }
    return Read(document + "</rsp>");
}

Moment At(const std::string& time)
{
    return {kToday, ParseTimeOfDay(time).value()};
}

std::string Numbers(const char* what, const std::vector<std::size_t>& numbers)
{
    std::string text;
    for (const std::size_t number : numbers) {
        text += std::string(text.empty() ? what : "") + " " + std::to_string(number);
    }
    return text;
}

/// "1 2 | 12:00:00 -1 +3": what plays, and the next change; "tomorrow" behind its time where it is.
std::string Outline(const _VQMPolicy& policy, const std::string& time)
{
    const Programme programme = ProgrammeAt(policy, At(time));
    std::vector<std::size_t> active;
    for (const ActivePeriod& period : programme.active) {
        active.push_back(period.number);
    }
    std::string text = Numbers("plays", active);
    if (programme.idleReason) {
        text = NameOf(*programme.idleReason) + (text.empty() ? "" : " ") + text;
    }
    text += " |";
    if (programme.next) {
        text += " " + TimeText(programme.next->second) + (programme.next->tomorrow ? " tomorrow" : "");
        text += Numbers(" ends", programme.next->ending) + Numbers(" starts", programme.next->starting);
    }
    return text;
}

struct Case {
    const char* what;
    std::vector<Times> periods;
    std::vector<std::pair<std::string, std::string>> outlines; ///< by time
};

const std::vector<Times> kShop = {{"09:00:00", "12:00:00"}, {"12:00:00", "18:30:00"}, {"10:00:00", "11:00:00"}};

const Case kCases[] = {
    {"nothing at all", {}, {{"12:00", "no-periods |"}}},
    {"a start plays and an end does not",
     {{"09:00:00", "18:30:00"}},
     {{"08:59:59", "between-periods | 09:00:00 starts 1"},
      {"09:00:00", "plays 1 | 18:30:00 ends 1"},
      {"18:29:59", "plays 1 | 18:30:00 ends 1"},
      {"18:30:00", "between-periods | 09:00:00 tomorrow starts 1"},
      {"23:59:59", "between-periods | 09:00:00 tomorrow starts 1"},
      {"00:00:00", "between-periods | 09:00:00 starts 1"}}},
    {"touching and overlapping periods",
     kShop,
     {{"09:59:59", "plays 1 | 10:00:00 starts 3"},
      {"10:00:00", "plays 1 3 | 11:00:00 ends 3"},
      {"11:00:00", "plays 1 | 12:00:00 ends 1 starts 2"},
      {"11:59:59", "plays 1 | 12:00:00 ends 1 starts 2"},
      {"12:00:00", "plays 2 | 18:30:00 ends 2"},
      {"18:30:00", "between-periods | 09:00:00 tomorrow starts 1"}}},
    {"one second",
     {{"10:00:00", "10:00:01"}},
     {{"10:00:00", "plays 1 | 10:00:01 ends 1"}, {"10:00:01", "between-periods | 10:00:00 tomorrow starts 1"}}},
    {"the same period twice",
     {{"10:00:00", "11:00:00"}, {"10:00:00", "11:00:00"}},
     {{"09:00", "between-periods | 10:00:00 starts 1 2"}, {"10:30", "plays 1 2 | 11:00:00 ends 1 2"}}},
    {"a start that is the end, or after it, never plays",
     {{"10:00:00", "10:00:00"}, {"22:00:00", "02:00:00"}},
     {{"10:00:00", "never-plays |"}, {"23:00:00", "never-plays |"}, {"01:00:00", "never-plays |"}}},
    {"periods that never play change nothing",
     {{"22:00:00", "02:00:00"}, {"09:00:00", "10:00:00"}},
     {{"08:00", "between-periods | 09:00:00 starts 2"}, {"21:00", "between-periods | 09:00:00 tomorrow starts 2"}}},
    {"the end of the day is midnight",
     {{"22:00:00", "24:00:00"}},
     {{"23:59:59", "plays 1 | 00:00:00 tomorrow ends 1"}, {"00:00:00", "between-periods | 22:00:00 starts 1"}}},
    {"what lies after the end of the day ends with it",
     {{"22:00:00", "24:59:59"}},
     {{"23:30:00", "plays 1 | 00:00:00 tomorrow ends 1"}, {"00:30:00", "between-periods | 22:00:00 starts 1"}}},
    {"what starts after the end of the day never plays", {{"24:00:00", "24:59:59"}}, {{"00:30:00", "never-plays |"}}},
    {"one period goes over to the next at midnight",
     {{"22:00:00", "24:00:00"}, {"00:00:00", "06:00:00"}},
     {{"23:00:00", "plays 1 | 00:00:00 tomorrow ends 1 starts 2"}, {"00:00:00", "plays 2 | 06:00:00 ends 2"}}},
    {"a period of the whole day never changes",
     {{"00:00:00", "24:00:00"}},
     {{"00:00:00", "plays 1 |"}, {"23:59:59", "plays 1 |"}}},
    {"a whole day less its last second",
     {{"00:00:00", "23:59:59"}},
     {{"12:00:00", "plays 1 | 23:59:59 ends 1"}, {"23:59:59", "between-periods | 00:00:00 tomorrow starts 1"}}},
    {"another one during the whole day",
     {{"00:00:00", "24:00:00"}, {"12:00:00", "13:00:00"}},
     {{"12:30:00", "plays 1 2 | 13:00:00 ends 2"}, {"13:00:00", "plays 1 | 12:00:00 tomorrow starts 2"}}},
    {"times without seconds lose a digit",
     {{"09:30", "18:45"}},
     {{"09:02:59", "between-periods | 09:03:00 starts 1"}, {"09:03:00", "plays 1 | 18:04:00 ends 1"}}},
    {"a bad hour, minute or text is midnight, a bad second is none",
     {{"25:00:00", "08:00:61"}, {"09:60:00", "noon"}, {"", "01:00:00"}},
     {{"00:30:00", "plays 1 3 | 01:00:00 ends 3"}, {"08:00:00", "between-periods | 00:00:00 tomorrow starts 1 3"}}},
    {"without files nothing plays though a period does",
     {{"09:00:00", "10:00:00", ""}},
     {{"09:30:00", "no-files plays 1 | 10:00:00 ends 1"}}},
    {"one of two periods has files",
     {{"09:00:00", "10:00:00", ""}, {"09:00:00", "10:00:00"}},
     {{"09:30:00", "plays 1 2 | 10:00:00 ends 1 2"}}},
};

TEST(Programme, WhatPlaysAndWhatComesNext)
{
    for (const Case& each : kCases) {
        const _VQMPolicy policy = ReadPeriods(each.periods);
        for (const auto& [time, outline] : each.outlines) {
            EXPECT_EQ(Outline(policy, time), outline) << each.what << " at " << time;
        }
    }
}

/// The rule itself, told second by second.
TEST(Programme, AgreesWithEverySecondOfTheDay)
{
    const _VQMPolicy policy = ReadPeriods({{"00:00:00", "00:00:05"},
                                           {"00:00:03", "00:00:04"},
                                           {"12:00:00", "24:00:00"},
                                           {"23:59:50", "23:59:55"},
                                           {"00:00:00", "24:00:00"}});
    const auto playing = [&policy](int second) {
        std::vector<std::size_t> numbers;
        std::size_t number = 0;
        for (const _VQMSchdule& period : policy.listSchedule) {
            ++number;
            if (SecondsOf(period.stStartTime) <= second && second < SecondsOf(period.stEndTime)) {
                numbers.push_back(number);
            }
        }
        return numbers;
    };
    int expected = 0; // walking backwards, the next change is the one seen last
    for (int second = 0; playing(second) == playing(kDaySeconds - 1); ++second) {
        expected = second + 1;
    }
    for (int second = kDaySeconds - 1; second >= 0; --second) {
        const Programme programme = ProgrammeAt(policy, {kToday, second});
        std::vector<std::size_t> active;
        for (const ActivePeriod& period : programme.active) {
            active.push_back(period.number);
        }
        ASSERT_EQ(active, playing(second)) << TimeText(second);
        if (playing(second) != playing((second + 1) % kDaySeconds)) {
            expected = (second + 1) % kDaySeconds;
        }
        ASSERT_TRUE(programme.next);
        ASSERT_EQ(TimeText(programme.next->second), TimeText(expected)) << TimeText(second);
        ASSERT_EQ(programme.next->tomorrow, expected <= second) << TimeText(second);
    }
}

TEST(Programme, FilesPlayByOrderAndEqualOnesAsWritten)
{
    const _VQMPolicy policy =
        ReadPeriods({{"09:00:00", "10:00:00",
                      "<item id='a' order='2'/><item id='b' order='10'/><item id='c'/>"
                      "<item id='d' order='2'/><item id='e' order='-1'/><item id='f' order='x'/>"}});
    const Programme programme = ProgrammeAt(policy, At("09:00"));
    std::vector<std::string> ids;
    for (const _VQMContentInfo* file : programme.active.at(0).files) {
        ids.push_back(file->strID);
    }
    EXPECT_THAT(ids, ElementsAre("e", "c", "f", "a", "d", "b"));
    EXPECT_EQ(programme.active.at(0).period, &policy.listSchedule.front());
}

TEST(Programme, FieldsOutsideAllRangesAreCutToTheDay)
{
    _VQMSchdule period;
    period.stStartTime.nHour = INT_MIN;
    period.stEndTime.nHour = INT_MAX;
    period.stEndTime.nMinute = INT_MAX;
    period.stEndTime.nSecond = INT_MAX;
    EXPECT_EQ(SpanOf(period).start, 0);
    EXPECT_EQ(SpanOf(period).end, kDaySeconds);
    EXPECT_EQ(SecondsOf(period.stEndTime), 3661LL * INT_MAX);
    std::swap(period.stStartTime, period.stEndTime);
    EXPECT_TRUE(SpanOf(period).IsEmpty());
}

TEST(Programme, ADocumentIsOkWhenItSaysSo)
{
    EXPECT_TRUE(ProgrammeAt(Read("<rsp state='ok'/>"), At("12:00")).stateIsOk);
    EXPECT_FALSE(ProgrammeAt(Read("<rsp state='fail'/>"), At("12:00")).stateIsOk);
    EXPECT_FALSE(ProgrammeAt(Read("<rsp/>"), At("12:00")).stateIsOk);
    EXPECT_FALSE(ProgrammeAt(_VQMPolicy(), At("12:00")).stateIsOk);
}

TEST(Programme, AScheduleExpiresAfterItsLastDay)
{
    const std::pair<const char*, Expiry> cases[] = {
        {"2026-11-20", Expiry::kExpired},    {"2026-11-21", Expiry::kValid},   {"2026-11-22", Expiry::kValid},
        {"2026-10-31", Expiry::kExpired},    {"2026-12-01", Expiry::kValid},   {"2025-12-31", Expiry::kExpired},
        {"2027-01-01", Expiry::kValid},      {"2026/11/20", Expiry::kExpired}, {"", Expiry::kNone},
        {"2026-1-1", Expiry::kNone},         {"0000-00-00", Expiry::kNone},    {"2026-02-29", Expiry::kImpossible},
        {"20161231  ", Expiry::kImpossible}, {"2028-02-29", Expiry::kValid},
    };
    for (const auto& [date, expiry] : cases) {
        const _VQMPolicy policy = Read("<rsp state='ok'><project expiration='" + std::string(date) + "'/></rsp>");
        EXPECT_EQ(NameOf(ExpiryOn(policy, kToday)), NameOf(expiry)) << date;
        EXPECT_EQ(ProgrammeAt(policy, At("12:00")).expiry, expiry) << date;
    }
}

/// Expired or not, the library hands the periods out, and so they are told.
TEST(Programme, AnExpiredScheduleStillHasItsPeriods)
{
    const _VQMPolicy policy = Read("<rsp><project expiration='2016-12-31'/>"
                                   "<schedule start_time='00:00:00' end_time='24:00:00'><item/></schedule></rsp>");
    const Programme programme = ProgrammeAt(policy, At("12:00"));
    EXPECT_EQ(programme.active.size(), 1U);
    EXPECT_FALSE(programme.idleReason);
}

} // namespace

} // namespace schedule
