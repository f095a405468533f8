#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Diagnostics/Edit/ApplyEdits.h"
#include "Diagnostics/Edit/UnifiedDiff.h"

namespace {

std::string Applied(const std::string& document, std::vector<Edit> edits)
{
    return ApplyEdits(document, SortedEdits(document, std::move(edits)));
}

std::string Diff(const std::string& document, const std::vector<Edit>& edits)
{
    std::string text;
    const bool wanted =
        WriteUnifiedDiff("a.xml", document, SortedEdits(document, edits), [&text](std::string_view part) {
            text += part;
            return true;
        });
    EXPECT_TRUE(wanted);
    return text;
}

/// "1\n2\n...", a number a line.
std::string Numbers(int last, const std::string& lineEnd = "\n")
{
    std::string text;
    for (int number = 1; number <= last; ++number) {
        text += std::to_string(number) + lineEnd;
    }
    return text;
}

TEST(Edits, ReplaceInsertAndRemoveWhatTheyNameAndNothingElse)
{
    EXPECT_EQ(Applied("abcdef", {}), "abcdef");
    EXPECT_EQ(Applied("abcdef", {{4, "e", "E"}, {1, "bc", ""}, {0, "", "<"}, {6, "", ">"}}), "<adEf>");
    EXPECT_EQ(Applied(std::string("\0\xff\r\n", 4), {{1, "\xff", "x"}}), std::string("\0x\r\n", 4));
}

TEST(Edits, ThatDoNotFitAreRefused)
{
    const std::vector<std::vector<Edit>> bad = {
        {{1, "c", "x"}},                  // other bytes stand there
        {{7, "", "x"}},                   // beyond the end
        {{5, "fg", "x"}},                 // partly beyond it
        {{0, "abc", "x"}, {2, "c", "y"}}, // overlap
        {{3, "", "x"}, {3, "", "y"}},     // no order between the two
    };
    for (const std::vector<Edit>& edits : bad) {
        EXPECT_THROW(SortedEdits("abcdef", edits), std::logic_error) << edits.front().offset;
    }
}

TEST(UnifiedDiff, IsEmptyWithoutEdits)
{
    EXPECT_EQ(Diff("abc\n", {}), "");
}

TEST(UnifiedDiff, ShowsThreeLinesAroundAChange)
{
    EXPECT_EQ(Diff(Numbers(9), {{8, "5", "five"}}), "--- a.xml\n+++ a.xml\n"
                                                    "@@ -2,7 +2,7 @@\n 2\n 3\n 4\n-5\n+five\n 6\n 7\n 8\n");
    EXPECT_EQ(Diff("x\n", {{0, "x", "y"}}), "--- a.xml\n+++ a.xml\n@@ -1 +1 @@\n-x\n+y\n");
}

TEST(UnifiedDiff, JoinsChangesWhoseContextTouches)
{
    const std::string joined = Diff(Numbers(9), {{0, "1", "a"}, {14, "8", "b"}});
    EXPECT_EQ(joined, "--- a.xml\n+++ a.xml\n@@ -1,9 +1,9 @@\n-1\n+a\n 2\n 3\n 4\n 5\n 6\n 7\n-8\n+b\n 9\n");
    const std::string apart = Diff(Numbers(9), {{0, "1", "a"}, {16, "9", "b"}});
    EXPECT_EQ(apart,
              "--- a.xml\n+++ a.xml\n@@ -1,4 +1,4 @@\n-1\n+a\n 2\n 3\n 4\n@@ -6,4 +6,4 @@\n 6\n 7\n 8\n-9\n+b\n");
}

TEST(UnifiedDiff, PutsEditsOfOneLineTogether)
{
    EXPECT_EQ(Diff("a b c\n", {{0, "a", "A"}, {4, "c", ""}}), "--- a.xml\n+++ a.xml\n@@ -1 +1 @@\n-a b c\n+A b \n");
}

TEST(UnifiedDiff, CountsLinesThatGoAndComeInLaterHunks)
{
    const std::string diff = Diff(Numbers(20), {{0, "1\n2", "one"}, {45, "19", "a\nb"}});
    EXPECT_EQ(diff, "--- a.xml\n+++ a.xml\n@@ -1,5 +1,4 @@\n-1\n-2\n+one\n 3\n 4\n 5\n"
                    "@@ -16,5 +15,6 @@\n 16\n 17\n 18\n-19\n+a\n+b\n 20\n");
}

TEST(UnifiedDiff, SaysWhereALastLineHasNoEnd)
{
    EXPECT_EQ(Diff("a\nb", {{0, "a", "A"}}),
              "--- a.xml\n+++ a.xml\n@@ -1,2 +1,2 @@\n-a\n+A\n b\n\\ No newline at end of file\n");
}

TEST(UnifiedDiff, TakesEveryLineEndAndShowsNone)
{
    const std::string expected = "--- a.xml\n+++ a.xml\n@@ -2,7 +2,7 @@\n 2\n 3\n 4\n-5\n+five\n 6\n 7\n 8\n";
    EXPECT_EQ(Diff(Numbers(9, "\r\n"), {{12, "5", "five"}}), expected);
    EXPECT_EQ(Diff(Numbers(9, "\r"), {{8, "5", "five"}}), expected);
}

TEST(UnifiedDiff, LetsNoControlCharacterThroughButTheTab)
{
    EXPECT_EQ(Diff("\t\x1b[2J\xc2\x9b\n", {{1, "\x1b", "x"}}),
              "--- a.xml\n+++ a.xml\n@@ -1 +1 @@\n-\t\\x1b[2J\\xc2\\x9b\n+\tx[2J\\xc2\\x9b\n");
    EXPECT_EQ(Diff("\xe4\x9b 1\n", {{3, "1", "2"}}),
              "--- a.xml\n+++ a.xml\n@@ -1 +1 @@\n-ä\\xc2\\x9b 1\n+ä\\xc2\\x9b 2\n");
}

TEST(UnifiedDiff, EndsWithItsReader)
{
    int calls = 0;
    EXPECT_FALSE(WriteUnifiedDiff("a", "x\n", {{0, "x", "y"}}, [&calls](std::string_view) { return ++calls < 2; }));
    EXPECT_EQ(calls, 2);
}

} // namespace
