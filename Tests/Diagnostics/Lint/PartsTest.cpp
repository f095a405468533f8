#include <algorithm>
#include <random>

#include <gmock/gmock.h>

#include "Diagnostics/Lint/FindingList.h"
#include "Diagnostics/Lint/PeriodOverlaps.h"
#include "Diagnostics/Lint/SeenTexts.h"
#include "Diagnostics/Lint/TagScanner.h"
#include "Tests/Diagnostics/Lint/Documents.h"

namespace {

using lint::Rule;
using testing::ElementsAre;

Diagnostic FindingOn(std::uint64_t line)
{
    Diagnostic finding;
    finding.line = line;
    return finding;
}

TEST(FindingList, KeepsTheGravestAndThenTheFirst)
{
    lint::FindingList list(3, {});
    list.Add(Rule::kHour24, FindingOn(1));
    list.Add(Rule::kExpired, FindingOn(9));
    list.Add(Rule::kExpired, FindingOn(2));
    list.Add(Rule::kTimeMalformed, FindingOn(8));
    list.Add(Rule::kExpired, FindingOn(5));
    const lint::Report report = list.Take();
    std::vector<std::uint64_t> lines;
    for (const Diagnostic& finding : report.findings) {
        lines.push_back(finding.line);
    }
    EXPECT_THAT(lines, ElementsAre(2U, 5U, 8U));
    EXPECT_EQ(report.counts.errors, 1U);
    EXPECT_EQ(report.counts.warnings, 3U);
    EXPECT_EQ(report.counts.notes, 1U);
    EXPECT_EQ(report.notKept, 2U);
}

TEST(FindingList, ForgetsIgnoredRulesAltogether)
{
    lint::FindingList list(3, {Rule::kExpired});
    list.Add(Rule::kExpired, FindingOn(1));
    list.Count(Rule::kExpired);
    const lint::Report report = list.Take();
    EXPECT_TRUE(report.findings.empty());
    EXPECT_EQ(report.counts.warnings, 0U);
    EXPECT_EQ(report.notKept, 0U);
}

TEST(PeriodOverlaps, AgreesWithComparingEachPeriodWithEachOther)
{
    std::mt19937 random(7); // NOLINT: the same periods each time
    for (int round = 0; round < 200; ++round) {
        lint::PeriodOverlaps overlaps;
        std::vector<lint::Period> earlier;
        for (std::uint64_t line = 1; line <= 30; ++line) {
            const int start = static_cast<int>(random() % 89000);
            const int length = 1 + static_cast<int>(random() % (round % 2 == 0 ? 90000 : 900));
            const lint::Period period = {start, std::min(start + length, 89999), line};
            std::uint64_t expected = 0;
            for (const lint::Period& other : earlier) {
                if (expected == 0 && other.start < period.end && period.start < other.end) {
                    expected = other.line;
                }
            }
            const std::optional<lint::Period> found = overlaps.Add(period);
            EXPECT_EQ(found ? found->line : 0, expected);
            earlier.push_back(period);
        }
    }
}

TEST(SeenTexts, RemembersTheFirstLineOfEachText)
{
    lint::SeenTexts seen;
    for (std::uint64_t line = 1; line <= 5000; ++line) {
        EXPECT_EQ(seen.Add("text" + std::to_string(line), line), std::nullopt);
    }
    for (std::uint64_t line = 1; line <= 5000; ++line) {
        EXPECT_EQ(seen.Add("text" + std::to_string(line), 9999), line);
    }
    EXPECT_EQ(seen.Add("", 7), std::nullopt);
    EXPECT_EQ(seen.Add("", 8), 7U);
    seen.Clear();
    EXPECT_EQ(seen.Add("text1", 3), std::nullopt);
}

TEST(SeenNumbers, RemembersAscendingAndOtherNumbers)
{
    lint::SeenNumbers seen;
    const std::vector<int> numbers = {5, 7, 9, 6, -1, 8, 100};
    for (std::size_t index = 0; index < numbers.size(); ++index) {
        EXPECT_EQ(seen.Add(numbers[index], index + 1), std::nullopt) << numbers[index];
    }
    for (std::size_t index = 0; index < numbers.size(); ++index) {
        EXPECT_EQ(seen.Add(numbers[index], 99), index + 1) << numbers[index];
    }
    seen.Clear();
    EXPECT_EQ(seen.Add(6, 3), std::nullopt);
    EXPECT_EQ(seen.Add(5, 4), std::nullopt);
}

TEST(TagScanner, GivesNothingForWhatIsNoTag)
{
    EXPECT_TRUE(lint::ScanAttributes("").empty());
    EXPECT_TRUE(lint::ScanAttributes("&entity;").empty());
    EXPECT_TRUE(lint::ScanAttributes("<a/>").empty());
    EXPECT_TRUE(lint::ScanAttributes("<a b='cut").empty());
}

} // namespace
