#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Diagnostics/Text/LookAlike.h"
#include "Diagnostics/Text/Normalization.h"
#include "Platform/common/Utf8.h"

namespace {

/// A file that is wanted, one that is there, and what is said of the two; empty where they are strangers.
struct Case {
    const char* name;
    std::string wanted;
    std::string there;
    std::string text;
};

constexpr char kSeparate[] = " is there, which looks the same, but writes its accents as characters of their own; "
                             "rename it: mv -- ";
constexpr char kComposed[] = " is there, which looks the same, but writes each letter and its accent as one character; "
                             "rename it: mv -- ";

const Case kCases[] = {
    {"Case", "logo.jpg", "LOGO.JPG", "'LOGO.JPG' is there, but upper and lower case count"},
    {"CaseOfALetterWithAnAccent", "\u00FCber.jpg", "U\u0308BER.JPG",
     "'U\u0308BER.JPG' is there, but upper and lower case count"},
    {"CaseOfGreekAndCyrillic", "\u03B1\u0436.mp4", "\u0391\u0416.mp4",
     "'\u0391\u0416.mp4' is there, but upper and lower case count"},
    {"AnAccentOfItsOwn", "F\u00FChrung.mp4", "Fu\u0308hrung.mp4",
     "'Fu\u0308hrung.mp4'" + std::string(kSeparate) + "$'Fu\\314\\210hrung.mp4' $'F\\303\\274hrung.mp4'"},
    {"AnAccentInTheLetter", "Fu\u0308hrung.mp4", "F\u00FChrung.mp4",
     "'F\u00FChrung.mp4'" + std::string(kComposed) + "$'F\\303\\274hrung.mp4' $'Fu\\314\\210hrung.mp4'"},
    {"TwoAccentsInAnotherOrder", "\u1EC7.mp4", "e\u0302\u0323.mp4",
     "'e\u0302\u0323.mp4'" + std::string(kSeparate) + "$'e\\314\\202\\314\\243.mp4' $'\\341\\273\\207.mp4'"},
    {"AKoreanSyllable", "\uD55C.mp4", "\u1112\u1161\u11AB.mp4",
     "'\u1112\u1161\u11AB.mp4'" + std::string(kSeparate) +
         "$'\\341\\204\\222\\341\\205\\241\\341\\206\\253.mp4' $'\\355\\225\\234.mp4'"},
    {"ABlank", "intro.mp4", "intro .mp4", "'intro .mp4' is there, but blanks count"},
    {"AnUnderscore", "spring sale.mp4", "spring_sale.mp4", "'spring_sale.mp4' is there, but blanks count"},
    {"ANumberedCopy", "intro.mp4", "intro (1).mp4", "'intro (1).mp4' is there, under the name of a copy"},
    {"ACopy", "intro.mp4", "Intro - Copy.mp4", "'Intro - Copy.mp4' is there, under the name of a copy"},
    {"AnExtensionTwice", "intro.mp4", "intro.mp4.mp4", "'intro.mp4.mp4' is there, with its extension twice"},
    {"OneMoreExtension", "schedule.xml", "schedule.xml.txt", "'schedule.xml.txt' is there, with one more extension"},
    {"BytesThatAreNotUtf8", "f\xFC.mp4", "F\xFC.mp4", "'F\xFC.mp4' is there, but upper and lower case count"},
    {"AnotherName", "intro.mp4", "outro.mp4", ""},
    {"AnotherExtension", "intro.mp4", "intro.avi", ""},
    {"AnotherNumber", "intro (a).mp4", "intro.mp4", ""},
    {"AnotherAccent", "F\u00FChrung.mp4", "Fuhrung.mp4", ""},
};

class LookAlike : public testing::TestWithParam<Case> {};

TEST_P(LookAlike, IsFoundAndSaidToDiffer)
{
    const Case& expected = GetParam();
    const std::vector<std::u32string> keys = LookAlikeKeys(expected.there);
    const bool found = std::find(keys.begin(), keys.end(), LookAlikeKey(expected.wanted)) != keys.end();
    ASSERT_EQ(found, !expected.text.empty());
    if (found) {
        EXPECT_EQ(DescribeLookAlike(expected.wanted, expected.there), expected.text);
    }
}

const auto kNameOfCase = [](const testing::TestParamInfo<Case>& info) { return info.param.name; };

INSTANTIATE_TEST_SUITE_P(Names, LookAlike, testing::ValuesIn(kCases), kNameOfCase);

TEST(Normalization, NamesThatMixBothFormsAreFound)
{
    const std::optional<MixedForms> mixed = FindMixedForms("Fr\u00FChling-Cafe\u0301");
    ASSERT_TRUE(mixed);
    EXPECT_EQ(mixed->composed, "\u00FC");
    EXPECT_EQ(mixed->separate, "e\u0301");
    for (const char* const text : {"", "plain", "Fr\u00FChling-Caf\u00E9", "Fru\u0308hling-Cafe\u0301",
                                   "\u00FC x\u0301", "\u00FC \u0301", "\xFF\u00FC"}) {
        EXPECT_FALSE(FindMixedForms(text)) << text;
    }
}

TEST(Characters, AreCountedAndKnownToBeCutOff)
{
    EXPECT_EQ(platform::CountCodePoints(""), 0U);
    EXPECT_EQ(platform::CountCodePoints("a\u00fc\u4e2d\U0001f600"), 4U);
    for (const char* whole : {"\u00fc", "\u4e2d", "\U0001f600"}) {
        const std::string text = whole;
        for (std::size_t size = 1; size < text.size(); ++size) {
            EXPECT_TRUE(platform::FirstCodePoint(text.substr(0, size)).cutOff) << size;
            EXPECT_EQ(platform::FirstCodePoint(text.substr(0, size)).size, 0U) << size;
        }
        EXPECT_FALSE(platform::FirstCodePoint(text).cutOff);
    }
    EXPECT_FALSE(platform::FirstCodePoint("").cutOff);
    EXPECT_FALSE(platform::FirstCodePoint("\xff").cutOff);
}

TEST(Characters, OfUtf8AreReadAndWritten)
{
    for (const char32_t code : {0x41U, 0x7FU, 0x80U, 0x7FFU, 0x800U, 0xD7FFU, 0xE000U, 0xFFFFU, 0x10000U, 0x10FFFFU}) {
        std::string text;
        platform::AppendCodePoint(text, code);
        const platform::CodePoint read = platform::FirstCodePoint(text + "x");
        EXPECT_EQ(read.value, code);
        EXPECT_EQ(read.size, text.size());
    }
    for (const char* const text : {"", "\x80", "\xC3", "\xC3(", "\xC0\xAF", "\xE0\x80\x80", "\xED\xA0\x80",
                                   "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFF"}) {
        EXPECT_EQ(platform::FirstCodePoint(text).size, 0U);
    }
}

} // namespace
