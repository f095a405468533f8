#include "Tests/Data/ScheduleFixture.h"

using recorder::Lines;
using recorder::Take;
using testing::IsEmpty;

namespace {
class ScheduleTime : public ScheduleTest {};
} // namespace

TEST_F(ScheduleTime, TimesAreHoursMinutesSeconds)
{
    const struct {
        const char* text;
        const char* time;
        std::vector<std::string> messages;
    } cases[] = {
        {"09:00:00", "9:0:0", {}},
        {"23:59:59", "23:59:59", {}},
        {"24:00:00", "24:0:0", {}},
        {"24:59:59", "24:59:59", {}},
        {"9:5:7", "9:5:7", {}},
        {"009:005:007", "9:5:7", {}},
        {"00:00:00", "0:0:0", {}},
        // Without the second colon the last character is lost.
        {"09:30", "9:3:0", {"second separator can't be found\n"}},
        {"12:345", "12:34:0", {"second separator can't be found\n"}},
        {"24:60", "24:6:0", {"second separator can't be found\n"}},
        {"09:610", "0:0:0", {"second separator can't be found\n", "minute wrong data\n"}},
        {"09:30:", "9:30:0", {}},
        {"09:3:", "9:3:0", {}},
        {"9:5", "0:0:0", {"No more data after parsing hour\n"}},
        {"09:", "0:0:0", {"No more data after parsing hour\n"}},
        {"09::", "0:0:0", {"No more data after parsing hour\n"}},
        {":30:00", "0:0:0", {"Cannot find first separator :30:00\n"}},
        {":", "0:0:0", {"Cannot find first separator :\n"}},
        {"0930", "0:0:0", {"Cannot find first separator 0930\n"}},
        {"%s%n", "0:0:0", {"Cannot find first separator %s%n\n"}},
        {"", "0:0:0", {"Cannot find first separator \n"}},
        {"25:00:00", "0:0:0", {"hour wrong data\n"}},
        {"4294967296:00:00", "0:0:0", {"hour wrong data\n"}},
        {"99999999999999999999:00:00", "0:0:0", {"hour wrong data\n"}},
        {"25:", "0:0:0", {"hour wrong data\n"}}, // before what is missing is seen
        {"+9:30:00", "0:0:0", {"Hour Has not number data +9:30:00\n"}},
        {"-1:30:00", "0:0:0", {"Hour Has not number data -1:30:00\n"}},
        {" 9:30:00", "0:0:0", {"Hour Has not number data  9:30:00\n"}},
        {"%s:30:00", "0:0:0", {"Hour Has not number data %s:30:00\n"}},
        {"09:60:00", "0:0:0", {"minute wrong data\n"}},
        {"09:99999999999999999999:00", "0:0:0", {"minute wrong data\n"}},
        {"09::00", "0:0:0", {"Minute Has not number data 09::00\n"}},
        {"09:-1:00", "0:0:0", {"Minute Has not number data 09:-1:00\n"}},
        {"09:3 :00", "0:0:0", {"Minute Has not number data 09:3 :00\n"}},
        // A wrong second leaves hour and minute.
        {"09:30:60", "9:30:0", {"Seconds wrong data\n"}},
        {"09:30:99999999999999999999", "9:30:0", {"Seconds wrong data\n"}},
        {"09:30:1x", "9:30:0", {"Seconds Has not number data 09:30:1x\n"}},
        {"09:30:00 ", "9:30:0", {"Seconds Has not number data 09:30:00 \n"}},
        {"09:30:15:00", "9:30:0", {"Seconds Has not number data 09:30:15:00\n"}},
        {"09:30::", "9:30:0", {"Seconds Has not number data 09:30::\n"}},
    };
    for (const auto& expected : cases) {
        _VQMTime time{1, 2, 3, 4, 5, 6, 7}; // all of it is replaced
        container.ConvertHHMMSSTimeToVQMTime(expected.text, time);
        EXPECT_EQ(Text(time), std::string("0-0-0 ") + expected.time + " 0") << expected.text;
        EXPECT_EQ(Take(), ScheduleLines("ConvertHHMMSSTimeToVQMTime", expected.messages)) << expected.text;
    }
}

TEST_F(ScheduleTime, DatesHaveTheirDigitsAtFixedPlaces)
{
    const struct {
        const char* text;
        const char* date;
        const char* message; ///< or null
    } cases[] = {
        {"2016-12-31", "2016-12-31", nullptr},
        {"2016/12/31", "2016-12-31", nullptr},
        {"2016123100", "2016-23-0", nullptr},
        {"2016-12-31T10:00", "2016-12-31", nullptr},
        {"2016-99-99", "2016-99-99", nullptr},
        {"0000-00-00", "0-0-0", nullptr},
        {"x016-99-1x", "0-99-1", nullptr},
        {"20x6-1--x1", "20-1-0", nullptr},
        {"-016--1--2", "-16--1--2", nullptr},
        {"  16- 1- 2", "0-0-0", nullptr},
        {"2016-12-3", "0-0-0", " Wrong date size 9\n"},
        {"20161231", "0-0-0", " Wrong date size 8\n"},
        {"%d", "0-0-0", " Wrong date size 2\n"},
        {"", "0-0-0", " Wrong date size 0\n"},
    };
    for (const auto& expected : cases) {
        _VQMTime time{1, 2, 3, 4, 5, 6, 7};
        container.ConvertYYYYMMDDDateToVQMTime(expected.text, time);
        EXPECT_EQ(Text(time), std::string(expected.date) + " 0:0:0 0") << expected.text;
        Lines lines;
        if (expected.message != nullptr) {
            lines.push_back(ScheduleLine("ConvertYYYYMMDDDateToVQMTime", expected.message));
        }
        EXPECT_EQ(Take(), lines) << expected.text;
    }
}

TEST_F(ScheduleTime, OnlyDigitsAreANumber)
{
    for (const char* text : {"0", "9", "0123456789", "99999999999999999999"}) {
        EXPECT_TRUE(container.CheckStringHasOnlyNumber(text)) << text;
    }
    for (const char* text : {"", "-1", "+1", " 1", "1 ", "1.0", "1a", "a1", "/", ":", "\xb2", "\xd9\xa3"}) {
        EXPECT_FALSE(container.CheckStringHasOnlyNumber(text)) << text;
    }
    EXPECT_FALSE(container.CheckStringHasOnlyNumber(std::string("1\0", 2)));
    EXPECT_THAT(Take(), IsEmpty());
}

TEST_F(ScheduleTime, AnUnreadableTimeIsLoggedBetweenWhatIsReadable)
{
    Start("schedule", {"start_time", "9:5", "end_time", "09:30"});
    EXPECT_EQ(Take(), (Lines{ScheduleLine("ConvertHHMMSSTimeToVQMTime", "No more data after parsing hour\n"),
                             ScheduleLine("ParseScheduleAttribute", "Schedule - start_time 0 : 0 : 0\n"),
                             ScheduleLine("ConvertHHMMSSTimeToVQMTime", "second separator can't be found\n"),
                             ScheduleLine("ParseScheduleAttribute", "Schedule - end_time 9 : 3 : 0\n")}));
    Start("project", {"expiration", "20161231"});
    Lines lines = {ScheduleLine("ConvertYYYYMMDDDateToVQMTime", " Wrong date size 8\n"),
                   ScheduleLine("ParseProjectAttribute", "Project - Expiration 0-0-0 \n")};
    lines.resize(6, ScheduleLine("ParseProjectAttribute", kMissingAttribute));
    EXPECT_EQ(Take(), lines);
}

TEST_F(ScheduleTime, AnUnreadableOneReplacesTheOneBefore)
{
    Start("project", {"expiration", "2016-12-31", "expiration", "soon"});
    Start("schedule", {"start_time", "09:00:00", "start_time", "x"});
    End("schedule");
    EXPECT_EQ(Changes(Policy()), (Lines{"schedule 0-0-0 0:0:0 0 to 0-0-0 0:0:0 0"}));
}
