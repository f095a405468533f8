#include <cstdlib>

#include <gmock/gmock.h>

#include "Companion/Model/Language.h"
#include "Companion/Model/Screen.h"
#include "Companion/Model/Wording.h"
#include "Tests/Support/RecordingSettings.h"

namespace companion {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr int kHour = 60 * 60;

_VQMContentInfo Item(const char* name, uVQMINT64 size, int order)
{
    _VQMContentInfo item;
    item.strName = name;
    item.nSize = size;
    item.nOrder = order;
    return item;
}

_VQMSchdule Period(int start, int end, const std::list<_VQMContentInfo>& items)
{
    _VQMSchdule period;
    period.stStartTime.nHour = start;
    period.stEndTime.nHour = end;
    period.listContents = items;
    return period;
}

/// A TV that is ready: files until noon, another from noon to six.
readiness::Report ReadyReport()
{
    readiness::Report report;
    report.constants = {"constants.xml", readiness::DocumentState::kLoaded, "", {{"ScheduleFile", "s.xml"}}};
    report.verdict = {true, "", true, true};
    report.schedule.path = "/d/s.xml";
    report.schedule.directory = "/d/";
    report.schedule.state = readiness::DocumentState::kLoaded;
    report.schedule.policy.bError = false;
    report.schedule.policy.listSchedule = {Period(9, 12, {Item("b.mp4", 2, 2), Item("a.mp4", 1, 1)}),
                                           Period(12, 18, {Item("c.mp4", 3, 1)})};
    report.contents.directory = "/m/";
    report.contents.directoryPresent = true;
    for (const auto& [name, size] : {std::pair("b.mp4", 2), std::pair("a.mp4", 1), std::pair("c.mp4", 3)}) {
        readiness::ContentFile file;
        file.name = name;
        file.size = static_cast<uVQMINT64>(size);
        file.kind = readiness::FileKind::kFile;
        file.readable = true;
        report.contents.items.push_back({0, report.contents.files.size(), file.size});
        report.contents.files.push_back(file);
    }
    report.contents.complete = 3;
    return report;
}

void Lose(readiness::ContentFile& file)
{
    file.kind = readiness::FileKind::kMissing;
    file.size = 0;
    file.problem = "is missing";
}

schedule::Moment At(int hour)
{
    return {{2026, 11, 22}, hour * kHour};
}

/// Speaks a menu language.
void Speak(const char* language)
{
    setenv("LOCPATH", VQM_TEST_LOCALES, 1);
    unsetenv("LC_ALL");
    setenv("LC_MESSAGES", "xx_XX.UTF-8", 1);
    recording::settings() = {};
    recording::settings().texts[kLanguageKey] = language;
    FollowMenuLanguage();
}

TEST(CompanionScreen, SaysWhatPlaysNowInPlayOrderAndWhatComesNext)
{
    Speak("en_US.UTF-8");
    const Screen screen = ScreenOf(ReadyReport(), At(10));
    EXPECT_EQ(Headline(screen), "Ready to play");
    EXPECT_EQ(ProgrammeText(screen.now), "a.mp4, b.mp4");
    ASSERT_TRUE(screen.next);
    EXPECT_EQ(screen.next->second, 12 * kHour);
    EXPECT_EQ(ProgrammeText(screen.next->then), "c.mp4");
    EXPECT_EQ(CompleteText(screen), "3 of 3 complete");
}

TEST(CompanionScreen, BetweenPeriodsNothingPlaysAndTomorrowIsNext)
{
    Speak("de_DE.UTF-8");
    const Screen screen = ScreenOf(ReadyReport(), At(20));
    EXPECT_EQ(ProgrammeText(screen.now), "Nichts");
    EXPECT_EQ(WhenText(screen), "morgen um 09:00");
    EXPECT_EQ(ProgrammeText(screen.next->then), "a.mp4, b.mp4");
}

TEST(CompanionScreen, FirstObstacleIsTheHeadlineInTheDiagnosticsWords)
{
    Speak("de_DE.UTF-8");
    readiness::Report report = ReadyReport();
    Lose(report.contents.files[1]);
    report.contents.complete = 2;
    report.verdict.haveContents = false;
    const Screen screen = ScreenOf(report, At(10));
    EXPECT_EQ(Headline(screen), "'a.mp4' is missing; the schedule announces 1 byte");
    EXPECT_EQ(screen.outcome, readiness::Outcome::kPlaysNothing);
}

TEST(CompanionScreen, FilesThatAreNotInOrderComeFirstAndEachFileOnce)
{
    Speak("en_US.UTF-8");
    readiness::Report report = ReadyReport();
    Lose(report.contents.files[2]);
    report.contents.items.push_back(report.contents.items[0]);
    report.contents.complete = 3;
    report.verdict.haveContents = false;
    const Screen screen = ScreenOf(report, At(10));
    std::vector<std::string> lines;
    for (const FileLine& file : screen.files) {
        lines.push_back((file.complete ? "+ " : "- ") + file.name + ": " + DetailText(file));
    }
    EXPECT_THAT(lines, ElementsAre("- c.mp4: is missing; the schedule announces 3 bytes", "+ b.mp4: 2 bytes, complete",
                                   "+ a.mp4: 1 byte, complete"));
}

TEST(CompanionScreen, OfVeryManyFilesTheFirstAreShownAndTheRestIsCounted)
{
    Speak("de_DE.UTF-8");
    readiness::Report report = ReadyReport();
    for (int number = 0; number < 1000; ++number) {
        report.contents.items.push_back({0, report.contents.files.size(), 2});
        report.contents.files.push_back(report.contents.files[0]);
        report.contents.files.back().name = std::to_string(number);
    }
    Lose(report.contents.files.back());
    report.verdict.haveContents = false;
    const Screen screen = ScreenOf(report, At(10));
    EXPECT_EQ(screen.files.size(), 500U);
    EXPECT_EQ(screen.files[0].name, "999");
    EXPECT_EQ(MoreFilesText(screen), "und 503 weitere");
    EXPECT_EQ(CompleteText(screen), "1002 von 1003 vollständig");
}

TEST(CompanionScreen, WithoutAScheduleItSaysSoAndShowsNothingOfOne)
{
    Speak("en_US.UTF-8");
    readiness::Report report = ReadyReport();
    report.verdict = {true, "", false, false};
    report.schedule.state = readiness::DocumentState::kNotWellFormed;
    report.schedule.problem = "is cut off in line 3";
    const Screen screen = ScreenOf(report, At(10));
    EXPECT_EQ(Headline(screen), "The schedule '/d/s.xml' is cut off in line 3");
    EXPECT_THAT(screen.periods, testing::IsEmpty());
    EXPECT_THAT(screen.files, testing::IsEmpty());
    EXPECT_EQ(UntilText(screen) + WhenText(screen), "");
}

TEST(CompanionScreen, TextThatCannotBeShownIsSpelledOut)
{
    Speak("en_US.UTF-8");
    readiness::Report report = ReadyReport();
    report.contents.files[0].name = "a\n\xE2\x80\xAE"
                                    "4pm";
    const Screen screen = ScreenOf(report, At(10));
    EXPECT_EQ(screen.files[0].name, "a\\x0a\\xe2\\x80\\xae"
                                    "4pm");
}

TEST(CompanionScreen, PeriodsThatNobodyCouldTellApartAreJoined)
{
    readiness::Report report = ReadyReport();
    report.schedule.policy.listSchedule.clear();
    for (int minute = 0; minute < 600; ++minute) {
        _VQMSchdule period;
        period.stStartTime.nHour = period.stEndTime.nHour = minute / 60;
        period.stStartTime.nMinute = period.stEndTime.nMinute = minute % 60;
        period.stEndTime.nSecond = 30;
        report.schedule.policy.listSchedule.push_back(period);
    }
    const Screen screen = ScreenOf(report, At(10));
    ASSERT_EQ(screen.periods.size(), 1U);
    EXPECT_EQ(screen.periods[0].start, 0);
    EXPECT_EQ(screen.periods[0].end, 600 * 60 - 30);
}

TEST(CompanionWording, ProgrammeNamesTheFirstFilesAndCountsTheRest)
{
    const Programme programme = {{"a", "b", "c"}, 5, std::nullopt};
    const std::pair<const char*, const char*> kCases[] = {
        {"en_US.UTF-8", "a, b, c and 2 more"}, {"de_DE.UTF-8", "a, b, c und 2 weitere"}, {"ar_AE.UTF-8", "(2)"}};
    for (const auto& [language, text] : kCases) {
        Speak(language);
        EXPECT_THAT(ProgrammeText(programme), HasSubstr(text)) << language;
    }
}

TEST(CompanionLanguage, FollowsTheMenuLanguageAndFallsBackToEnglish)
{
    const struct {
        const char* language;
        const char* off;
        bool rightToLeft;
    } cases[] = {{"de_DE.UTF-8", "Aus", false},
                 {"ar_AE.UTF-8", "متوقف", true},
                 {"de", "Aus", false},
                 {"ko_KR.UTF-8", "Off", false},
                 {"", "Off", false},
                 {"../../x", "Off", false}};
    setenv("LANGUAGE", "", 1);
    for (const auto& [language, off, rightToLeft] : cases) {
        Speak(language);
        EXPECT_STREQ(Translated("Off"), off) << language;
        EXPECT_EQ(IsRightToLeft(), rightToLeft) << language;
    }
}

TEST(CompanionLanguage, EndOfTheDayIsWrittenAsATime)
{
    Speak("de_DE.UTF-8");
    EXPECT_EQ(TimeOfDay(0), "00:00");
    EXPECT_EQ(TimeOfDay(18 * kHour + 30 * 60 + 59), "18:30");
    EXPECT_EQ(TimeOfDay(24 * kHour), "24:00");
}

} // namespace

} // namespace companion
