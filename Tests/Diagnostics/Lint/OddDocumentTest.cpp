#include <random>

#include <gmock/gmock.h>

#include "Diagnostics/Lint/Render.h"
#include "Tests/Diagnostics/Lint/Documents.h"
#include "Tests/Support/Recorder.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using namespace std::string_literals;

TEST(LintOddDocument, EmptyAndBlankDocuments)
{
    EXPECT_THAT(PlacesIn(""), ElementsAre("1:1-1 not-well-formed"));
    EXPECT_THAT(PlacesIn("\n\n  "), ElementsAre("3:3-3 not-well-formed"));
    EXPECT_THAT(PlacesIn("\0\0\0"s), ElementsAre("1:1-1 not-well-formed"));
}

TEST(LintOddDocument, OneCutAnywhereIsNotWellFormed)
{
    const std::string document(kGoodDocument, sizeof kGoodDocument - 2); // without its last line end
    for (std::size_t size = 0; size < document.size(); ++size) {
        const lint::Report report = lint::Lint(document.substr(0, size), TestOptions());
        ASSERT_FALSE(report.findings.empty()) << size;
        EXPECT_EQ(report.findings.back().id, NameOf(lint::Rule::kNotWellFormed)) << size;
    }
    EXPECT_THAT(PlacesIn(document), IsEmpty());
}

TEST(LintOddDocument, NamesTheElementThatIsOpenAtTheEnd)
{
    const lint::Report report = lint::Lint("<rsp state='ok'>\n <item>\n", TestOptions());
    EXPECT_THAT(report.findings.back().message, HasSubstr("'item' of line 2 is not closed"));
}

TEST(LintOddDocument, WideEncodingsAreOneFinding)
{
    const std::string utf16le = "\xFF\xFE<\0r\0s\0p\0/\0>\0"s;
    const std::string utf16be = "\xFE\xFF\0<\0r\0s\0p\0/\0>"s;
    const std::string utf32 = "\xFF\xFE\0\0<\0\0\0"s;
    for (const std::string& document : {utf16le, utf16be, utf32, utf16le.substr(2), utf16be.substr(2)}) {
        EXPECT_THAT(PlacesIn(document), ElementsAre(testing::MatchesRegex("1:1-[12] unreadable-encoding")));
    }
}

TEST(LintOddDocument, TextAfterAZeroByteIsFoundHoweverFarBehind)
{
    const std::string zeros(200000, '\0');
    EXPECT_THAT(PlacesIn(kGoodDocument + zeros), IsEmpty());
    EXPECT_THAT(PlacesIn(kGoodDocument + zeros + "\r\n\t "), IsEmpty());
    EXPECT_THAT(PlacesIn(kGoodDocument + zeros + "x"), ElementsAre("6:1-1 text-after-nul"));
    EXPECT_THAT(PlacesIn("<rsp state='ok'>\0</rsp>"s),
                ElementsAre("1:17-17 not-well-formed", "1:17-17 text-after-nul"));
}

TEST(LintOddDocument, UnknownAndFalseEncodingsAreRejectedAsByTheTv)
{
    for (const std::string encoding : {"koi8-r", "utf-16"}) {
        const std::string declaration = "<?xml version='1.0' encoding='" + encoding + "'?>";
        EXPECT_THAT(PlacesIn(declaration + "<rsp>\xE4</rsp>"), ElementsAre("1:31-31 not-well-formed"));
        EXPECT_THAT(PlacesIn(declaration + "<rsp/>"), ElementsAre("1:31-37 encoding-declared-wrongly"));
    }
    EXPECT_THAT(PlacesIn("<rsp>\xC3(</rsp>"), testing::Contains("1:6-6 not-well-formed"));
}

TEST(LintOddDocument, WhatComesOutOfEntitiesIsPlacedAtTheReference)
{
    const std::string document = "<!DOCTYPE rsp [<!ENTITY s \"<schedule start_time='9' end_time='10:00:00'/>\">]>\n"
                                 "<rsp state='ok'>\n  &s;</rsp>";
    EXPECT_THAT(PlacesIn(document), ElementsAre("1:1-10 doctype", "3:3-6 no-items", "3:3-6 time-malformed"));
}

TEST(LintOddDocument, NoiseNeverBreaksIt)
{
    std::mt19937 random(20260601); // NOLINT: the same documents each time
    for (int round = 0; round < 2000; ++round) {
        std::string document = kGoodDocument;
        for (int change = 0; change < 1 + round % 5; ++change) {
            document[random() % document.size()] = static_cast<char>(random() % 256);
        }
        const lint::FileResult result{"f", "", lint::Lint(document, TestOptions())};
        for (const char character : lint::Render(result)) {
            EXPECT_TRUE(character == '\n' || static_cast<unsigned char>(character) >= 0x20U);
        }
        EXPECT_THAT(lint::RenderJson({result}), HasSubstr("\"schema_version\": 1"));
    }
    recorder::Clear();
}

TEST(LintOddDocument, ReadsOnThroughDeepNesting)
{
    std::string document = "<rsp state='ok'>";
    for (int depth = 0; depth < 100000; ++depth) {
        document += "<x>";
    }
    const lint::Report report = lint::Lint(document, TestOptions());
    EXPECT_EQ(report.counts.warnings, 100000U);
    EXPECT_EQ(report.counts.errors, 1U);
    EXPECT_EQ(report.findings.size(), 1000U);
    EXPECT_EQ(report.notKept, 99001U);
    EXPECT_EQ(report.findings.back().id, NameOf(lint::Rule::kNotWellFormed));
}

TEST(LintOddDocument, PassesOnWhatTheSourceThrows)
{
    const auto source = [](char*, std::size_t) -> std::size_t { throw std::runtime_error("gone"); };
    EXPECT_THROW(lint::Lint(source, TestOptions()), std::runtime_error);
}

TEST(LintOddDocument, EscapesWhatATerminalWouldObey)
{
    const std::string broken = lint::Render({"a\x1b[31m\xff.xml", "", lint::Lint("<rsp>\x1b", TestOptions())});
    EXPECT_THAT(broken, HasSubstr("a\\x1b[31m\\xff.xml:1:6: error: the control character 1B"));
    EXPECT_THAT(broken, HasSubstr("    <rsp>\\x1b\n         ^\n"));
}

} // namespace
