#include "Diagnostics/Timeline/Timeline.h"

#include <algorithm>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Data/VQMScheduleContainer.h"
#include "Diagnostics/Calendar/Clock.h"
#include "Diagnostics/Lint/Lint.h"
#include "Diagnostics/Timeline/Render.h"
#include "VQMSerialize/VQMXMLSerialize.h"

namespace timeline {

namespace {

using schedule::TimeText;

constexpr schedule::Day kDay = {2026, 11, 22};

using Times = std::pair<std::string, std::string>;

std::string Document(const std::vector<Times>& periods)
{
    std::string document = "<rsp state='ok'>";
    for (const auto& [start, end] : periods) {
        document += "<schedule start_time='" + start + "' end_time='" + end + "'><item/></schedule>";
    }
    return document + "</rsp>";
}

_VQMPolicy Read(const std::string& document)
{
    CVQMScheduleContainer container;
    CVQMXMLSerialize serializer;
    EXPECT_TRUE(serializer.Create() && serializer.Deserialize(document.c_str(), &container)) << document;
    _VQMPolicy policy;
    container.GetSturcture(&policy);
    return policy;
}

Timeline DayOf(const _VQMPolicy& policy)
{
    return TimelineOf(policy, "a.xml", kDay, std::nullopt);
}

/// "2 1 | 10:00:00 to 11:00:00: periods 1 and 2 | 00:00:00 to 09:00:00": order, overlaps, gaps.
std::string Outline(const std::vector<Times>& periods)
{
    const _VQMPolicy policy = Read(Document(periods));
    const Timeline day = DayOf(policy);
    std::string text;
    for (const DayPeriod& each : day.periods) {
        text += std::to_string(each.number) + " ";
    }
    text += "|";
    for (const Stretch& overlap : day.overlaps) {
        text += " " + StretchText(overlap);
    }
    text += " |";
    for (const schedule::Span& gap : day.gaps) {
        text += " " + SpanText(gap);
    }
    return text;
}

struct Case {
    const char* what;
    std::vector<Times> periods;
    const char* outline;
};

const Case kCases[] = {
    {"nothing at all", {}, "| | 00:00:00 to 24:00:00"},
    {"a shop", {{"09:00:00", "18:30:00"}}, "1 | | 00:00:00 to 09:00:00 18:30:00 to 24:00:00"},
    {"the whole day", {{"00:00:00", "24:00:00"}}, "1 | |"},
    {"beyond the day", {{"00:00:00", "24:59:59"}}, "1 | |"},
    {"touching is not overlapping", {{"12:00:00", "24:00:00"}, {"00:00:00", "12:00:00"}}, "2 1 | |"},
    {"overlapping",
     {{"00:00:00", "12:00:00"}, {"11:00:00", "24:00:00"}},
     "1 2 | 11:00:00 to 12:00:00: periods 1 and 2 |"},
    {"three at once",
     {{"00:00:00", "24:00:00"}, {"10:00:00", "12:00:00"}, {"11:00:00", "13:00:00"}},
     "1 2 3 | 10:00:00 to 11:00:00: periods 1 and 2 11:00:00 to 12:00:00: periods 1, 2 and 3"
     " 12:00:00 to 13:00:00: periods 1 and 3 |"},
    {"zero length and backwards",
     {{"10:00:00", "10:00:00"}, {"22:00:00", "02:00:00"}, {"01:00:00", "03:00:00"}},
     "3 1 2 | | 00:00:00 to 01:00:00 03:00:00 to 24:00:00"},
};

TEST(Timeline, OverlapsAndGapsAreThoseOfTheDay)
{
    for (const Case& each : kCases) {
        EXPECT_EQ(Outline(each.periods), each.outline) << each.what;
    }
}

/// Of a random schedule, whose times lie close together, up to `halfHours` after 19:00.
std::vector<Times> RandomPeriods(std::mt19937& random, unsigned int halfHours)
{
    std::vector<Times> periods(random() % 8);
    for (Times& times : periods) {
        const auto time = [&random, halfHours] {
            return TimeText(static_cast<long long>(random() % (halfHours + 1)) * 1800 + 68400);
        };
        times = {time(), time()};
    }
    return periods;
}

TEST(Timeline, AgreesWithTheProgrammeAtEverySecond)
{
    std::mt19937 random(1);
    for (int round = 0; round < 200; ++round) {
        const _VQMPolicy policy = Read(Document(RandomPeriods(random, 11)));
        const Timeline day = DayOf(policy);
        for (int second = 0; second < schedule::kDaySeconds; second += 450) {
            const schedule::Programme programme = schedule::ProgrammeAt(policy, {kDay, second});
            const auto contains = [second](const schedule::Span& span) { return span.Contains(second); };
            const auto overlap = std::find_if(day.overlaps.begin(), day.overlaps.end(),
                                              [&](const Stretch& each) { return contains(each.span); });
            EXPECT_EQ(std::any_of(day.gaps.begin(), day.gaps.end(), contains), programme.active.empty());
            ASSERT_EQ(overlap != day.overlaps.end(), programme.active.size() > 1) << TimeText(second);
            if (overlap != day.overlaps.end()) {
                ASSERT_EQ(overlap->periods.size(), programme.active.size());
                for (std::size_t index = 0; index < programme.active.size(); ++index) {
                    EXPECT_EQ(overlap->periods[index], programme.active[index].number);
                }
            }
        }
    }
}

TEST(Timeline, OverlapsExactlyWhereTheLinterSaysSo)
{
    // Of periods beyond midnight it says something else.
    std::mt19937 random(2);
    for (int round = 0; round < 300; ++round) {
        const std::string document = Document(RandomPeriods(random, 10));
        const lint::Report report = lint::Lint(document, lint::Options{kDay, {}});
        const bool found = std::any_of(report.findings.begin(), report.findings.end(), [](const Diagnostic& finding) {
            return finding.id == lint::NameOf(lint::Rule::kOverlappingPeriods);
        });
        const _VQMPolicy policy = Read(document);
        EXPECT_EQ(!DayOf(policy).overlaps.empty(), found) << document;
    }
}

TEST(Timeline, OfManyPeriodsAtOnceOnlyTheFirstAreNamed)
{
    const _VQMPolicy policy = Read(Document(std::vector<Times>(30, {"10:00:00", "11:00:00"})));
    const Timeline day = DayOf(policy);
    ASSERT_EQ(day.overlaps.size(), 1U);
    EXPECT_EQ(StretchText(day.overlaps.front()), "10:00:00 to 11:00:00: periods 1, 2, 3, 4, 5, 6, 7 and 23 more");
}

TEST(Timeline, FilesComeInPlayOrder)
{
    const auto item = [](const char* order, const char* name) {
        return std::string("<item order='") + order + "'><name>" + name + "</name><format>mp4</format></item>";
    };
    const _VQMPolicy policy =
        Read("<rsp><schedule>" + item("3", "c") + item("1", "a") + item("2", "b") + "</schedule><schedule/></rsp>");
    const _VQMSchdule& period = policy.listSchedule.front();
    EXPECT_EQ(FilesText(period, 3), "a.mp4, b.mp4, c.mp4");
    EXPECT_EQ(FilesText(period, 2), "a.mp4 and 2 further files");
    EXPECT_EQ(FilesText(period, 1), "3 files");
    EXPECT_EQ(FilesText(policy.listSchedule.back(), 3), "no files");
}

TEST(Timeline, ADayOnWhichNothingPlaysSaysWhy)
{
    const _VQMPolicy none = Read("<rsp state='ok'/>");
    EXPECT_EQ(DayOf(none).notes, std::vector<std::string>{"the schedule has no periods"});
    const _VQMPolicy never = Read(Document({{"22:00:00", "02:00:00"}}));
    EXPECT_EQ(DayOf(never).notes, std::vector<std::string>{"no period of the schedule starts before its end"});
}

std::string Rows(const std::vector<Times>& periods, std::size_t columns, std::optional<int> now)
{
    const _VQMPolicy policy = Read(Document(periods));
    const std::string text = RenderForTerminal(TimelineOf(policy, "a.xml", kDay, now), {columns, false, false});
    std::string rows;
    for (std::size_t index = 0; index < text.size();) {
        const std::size_t end = text.find('\n', index);
        const std::string line = text.substr(index, end - index);
        // The rows begin with a number and end with a cell.
        if (line.size() > 2 && line.find_first_of(".=#x") == 2 && line[1] == ' ' && line.find("  ") > line.size()) {
            rows += line + "\n";
        }
        index = end + 1;
    }
    return rows;
}

TEST(TerminalTimeline, BarsCoverWhatPlays)
{
    EXPECT_EQ(Rows({{"09:00:00", "12:00:00"}, {"11:00:00", "13:00:00"}, {"22:00:00", "02:00:00"}}, 30, std::nullopt),
              "1 .........==#............\n"
              "2 ...........#=...........\n"
              "3 ......................x.\n");
    // The smallest part of a cell, and the last second of the day.
    EXPECT_EQ(Rows({{"00:00:00", "00:00:01"}, {"23:59:59", "24:00:00"}, {"24:00:00", "24:30:00"}}, 30, std::nullopt),
              "1 =.......................\n"
              "2 .......................=\n"
              "3 .......................x\n");
    // An overlap elsewhere in the same cell is not that of a period which only touches it.
    EXPECT_EQ(Rows({{"09:00:00", "10:30:00"}, {"10:30:00", "12:00:00"}, {"10:30:00", "12:00:00"}}, 30, std::nullopt),
              "1 .........==.............\n"
              "2 ..........##............\n"
              "3 ..........##............\n");
    EXPECT_EQ(Rows({{"09:00:00", "12:00:00"}}, 30, 10 * 3600), "1 .........=|=............\n");
}

TEST(TerminalTimeline, NoLineOfThePictureIsWiderThanTheTerminal)
{
    const std::string item = "<item><name>" + std::string(300, 'n') + "\u65e5\u672c</name><format>mp4</format></item>";
    const _VQMPolicy policy =
        Read("<rsp state='ok'><schedule start_time='09:00:00' end_time='18:00:00'>" + item + "</schedule></rsp>");
    for (const std::size_t columns : {28U, 40U, 80U, 81U, 132U, 500U}) {
        for (const int now : {0, 43200, 86399}) {
            std::string text = RenderForTerminal(TimelineOf(policy, "a", kDay, now), {columns, false, false});
            text.resize(text.find("\ngap") + 1); // the words below the picture are never cut
            std::size_t widest = 0;
            for (std::size_t start = 0; start < text.size(); start = text.find('\n', start) + 1) {
                widest = std::max(widest, text.find('\n', start) - start);
            }
            EXPECT_LE(widest, columns) << text;
        }
    }
}

TEST(TerminalTimeline, ColoursAddNothingButColours)
{
    const _VQMPolicy policy =
        Read(Document({{"09:00:00", "12:00:00"}, {"11:00:00", "13:00:00"}, {"1:00:00", "0:00:00"}}));
    const Timeline day = TimelineOf(policy, "a", kDay, 36000);
    const std::string coloured = RenderForTerminal(day, {80, true, true});
    std::string plain;
    for (std::size_t index = 0; index < coloured.size(); ++index) {
        if (coloured[index] == '\033') {
            index = coloured.find('m', index);
        } else {
            plain += coloured[index];
        }
    }
    EXPECT_NE(coloured, plain);
    EXPECT_EQ(plain, RenderForTerminal(day, {80, false, true}));
}

TEST(SvgTimeline, SaysInWordsWhatItDraws)
{
    const _VQMPolicy policy = Read(Document({{"09:00:00", "12:00:00"}, {"11:00:00", "13:00:00"}}));
    const std::string picture = RenderSvg(TimelineOf(policy, "a&b.xml", kDay, std::nullopt));
    EXPECT_NE(picture.find("<title id=\"timeline-title\">a&amp;b.xml on 2026-11-22</title>"), std::string::npos);
    EXPECT_NE(picture.find("Period 2: 11:00:00 to 13:00:00; . "), std::string::npos) << picture;
    EXPECT_NE(picture.find("Overlap 11:00:00 to 12:00:00: periods 1 and 2."), std::string::npos);
    EXPECT_NE(picture.find("No period 13:00:00 to 24:00:00.</desc>"), std::string::npos);
}

TEST(SvgTimeline, AHugeScheduleMakesAPictureOfBoundedSize)
{
    std::vector<Times> periods;
    for (long long second = 0; second < 10000; ++second) {
        periods.emplace_back(TimeText(8 * second), TimeText(8 * second + 4 * (second % 3)));
    }
    const _VQMPolicy policy = Read(Document(periods));
    const std::string picture = RenderSvg(DayOf(policy));
    EXPECT_LT(picture.size(), 1000000U);
    EXPECT_NE(picture.find("and 9800 further periods"), std::string::npos);
    EXPECT_LT(RenderForTerminal(DayOf(policy), {80, true, true}).size(), 1000000U);
}

} // namespace

} // namespace timeline
