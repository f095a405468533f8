#include "Diagnostics/Calendar/Clock.h"

#include <cstdlib>
#include <ctime>
#include <string>

#include <gtest/gtest.h>

namespace schedule {

namespace {

TEST(Clock, ATimeOfDayIsReadStrictly)
{
    const std::pair<const char*, int> good[] = {{"00:00:00", 0},  {"00:00", 0},        {"00:00:01", 1},
                                                {"09:30", 34200}, {"09:30:15", 34215}, {"23:59:59", 86399}};
    for (const auto& [text, second] : good) {
        EXPECT_EQ(ParseTimeOfDay(text), second) << text;
    }
    for (const char* text :
         {"",         ":",      "9:30",  "09:3",     "0930",     "09:30:",   "09:30:1", "09:30:15:00",
          "24:00:00", "24:00",  "23:60", "09:30:60", "09-30-15", "09:30-15", "+9:30",   "-1:30",
          " 09:30",   "09:30 ", "0x:30", "09:30:1x", "noon",     "09:30\n",  "::::::::"}) {
        EXPECT_FALSE(ParseTimeOfDay(text)) << text;
    }
    EXPECT_FALSE(ParseTimeOfDay(std::string("09\00030", 5)));
}

TEST(Clock, TimesAndDaysHaveTwoDigits)
{
    EXPECT_EQ(TimeText(0), "00:00:00");
    EXPECT_EQ(TimeText(34215), "09:30:15");
    EXPECT_EQ(TimeText(kDaySeconds), "24:00:00");
    EXPECT_EQ(TimeText(89999), "24:59:59");
    EXPECT_EQ(DayText({2026, 2, 3}), "2026-02-03");
    EXPECT_EQ(DayText({2016, 23, 0}), "2016-23-00");
}

TEST(Clock, TheZoneIsNamedWithItsDistance)
{
    const auto text = [](const char* zone, int offset) { return ZoneText({{}, zone, offset}); };
    EXPECT_EQ(text("UTC", 0), "UTC (UTC+00:00)");
    EXPECT_EQ(text("CET", 3600), "CET (UTC+01:00)");
    EXPECT_EQ(text("NST", -12600), "NST (UTC-03:30)");
    EXPECT_EQ(text("+0545", 20700), "+0545 (UTC+05:45)");
    EXPECT_EQ(ZoneText({{}, "UTC", 0, "Mars/Base"}), "UTC (UTC+00:00), because TZ is 'Mars/Base', an unknown zone");
}

TEST(Clock, AZoneIsARuleOrAFileOfTheDatabase)
{
    for (const char* known : {"", ":", "UTC", "GMT", "CET-1", "CET-1CEST,M3.5.0,M10.5.0/3", "<+0545>-5:45", ":XYZ+3",
                              "/proc/self/exe", ":/proc/self/exe"}) {
        EXPECT_TRUE(IsTimeZone(known)) << known;
    }
    for (const char* unknown : {"Mars/Base", "Nowhere", "XY", "XY-1", "XYZ", "XYZ-", "XYZ--1", "<XYZ-1", "<>-1", "<",
                                "-1", "/proc/self", "/none", "."}) {
        EXPECT_FALSE(IsTimeZone(unknown)) << unknown;
    }
}

/// The zone of the process decides, on the day and the second alike.
TEST(Clock, IsReadInTheZoneOfTheProcess)
{
    const char* const before = std::getenv("TZ");
    const std::string restored = before != nullptr ? before : "";
    for (const long hours : {-11L, 0L, 13L}) {
        const std::string zone = "ABC" + std::to_string(-hours); // a positive number lies west
        setenv("TZ", zone.c_str(), 1);
        tzset();
        const std::time_t earliest = std::time(nullptr) + hours * 3600;
        const Clock clock = ReadClock();
        const std::time_t latest = std::time(nullptr) + hours * 3600;
        EXPECT_EQ(clock.zone, "ABC");
        EXPECT_EQ(clock.offset, hours * 3600);
        std::tm shown = {};
        shown.tm_year = clock.now.day.year - 1900;
        shown.tm_mon = clock.now.day.month - 1;
        shown.tm_mday = clock.now.day.day;
        shown.tm_sec = clock.now.second;
        const std::time_t time = timegm(&shown);
        EXPECT_GE(time, earliest);
        EXPECT_LE(time, latest);
    }
    if (before != nullptr) {
        setenv("TZ", restored.c_str(), 1);
    } else {
        unsetenv("TZ");
    }
    tzset();
}

} // namespace

} // namespace schedule
