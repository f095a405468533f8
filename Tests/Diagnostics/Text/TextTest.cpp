#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Diagnostics/Text/JsonWriter.h"
#include "Diagnostics/Text/Suggestions.h"
#include "Diagnostics/Text/Table.h"
#include "Diagnostics/Text/TerminalText.h"
#include "Diagnostics/Text/Words.h"

namespace {

using Align = Table::Align;

TEST(Table, ColumnsAreAsWideAsTheirWidestCell)
{
    Table table({Align::kRight, Align::kLeft, Align::kRight});
    table.Add({"order", "id", "bytes", "file"});
    table.Add({"1", "A1", "1048576", "intro.mp4"});
    table.Add({"10", "long id", "2", "x"});
    EXPECT_EQ(table.Text(), "order  id         bytes  file\n"
                            "    1  A1       1048576  intro.mp4\n"
                            "   10  long id        2  x\n");
}

TEST(Table, NoLineEndsInBlanks)
{
    Table table({Align::kLeft, Align::kRight});
    table.Add({"name", ""});
    table.Add({"", "1"});
    table.Add({});
    table.Add({"", "", "last"});
    EXPECT_EQ(table.Text(2), "  name\n"
                             "        1\n"
                             "\n"
                             "           last\n");
    EXPECT_EQ(Table({Align::kLeft}).Text(4), "");
}

TEST(Table, ALongCellCostsNothingInOtherLines)
{
    Table table({Align::kLeft});
    const std::string longCell(100000, 'x');
    table.Add({longCell, "1"});
    table.Add({"a", "2"});
    EXPECT_EQ(table.Text(), longCell + "  1\na" + std::string(81, ' ') + "2\n");
}

TEST(Table, WidthIsWhatATerminalShows)
{
    Table table({Align::kLeft});
    table.Add({"caf\u00e9", "1"});
    table.Add({"e\u0301", "2"});
    table.Add({"\u65e5\u672c", "3"});
    table.Add({"\x1b\xff", "4"});
    EXPECT_EQ(table.Text(), "caf\u00e9      1\n"
                            "e\u0301         2\n"
                            "\u65e5\u672c      3\n"
                            "\\x1b\\xff  4\n");
}

TEST(Terminal, WhatLeavesNoMarkIsSpelledOut)
{
    for (const auto& [text, escaped] : std::vector<std::pair<std::string, std::string>>{
             {"caf\u00e9 \u65e5\u672c e\u0301", "caf\u00e9 \u65e5\u672c e\u0301"},
             {"a\n\x1b\x7f", "a\\x0a\\x1b\\x7f"},
             {"\ufeff", "\\xef\\xbb\\xbf"},
             {"\u202e", "\\xe2\\x80\\xae"},
             {"\u200b", "\\xe2\\x80\\x8b"},
             {"\u2028", "\\xe2\\x80\\xa8"},
             {"\u3164", "\\xe3\\x85\\xa4"},
             {"\ufe0f", "\\xef\\xb8\\x8f"},
             {"\xc2\x9b", "\\xc2\\x9b"},
             {"\x9b\xff", "\\x9b\\xff"}}) {
        EXPECT_EQ(EscapedForTerminal(text), escaped);
    }
}

TEST(Terminal, WidthOfAText)
{
    EXPECT_EQ(WidthOnTerminal(""), 0U);
    EXPECT_EQ(WidthOnTerminal("abc"), 3U);
    EXPECT_EQ(WidthOnTerminal("\u00e9"), 1U);
    EXPECT_EQ(WidthOnTerminal("\u65e5"), 2U);
}

TEST(Json, ADocumentSaysItsSchemaFirstAndKeepsItsOrder)
{
    EXPECT_EQ(RenderJsonDocument({{"z", 1}, {"a", {1, 2}}}), "{\n"
                                                             "  \"schema_version\": 1,\n"
                                                             "  \"z\": 1,\n"
                                                             "  \"a\": [\n"
                                                             "    1,\n"
                                                             "    2\n"
                                                             "  ]\n"
                                                             "}\n");
    EXPECT_EQ(RenderJsonDocument(Json::object()), "{\n  \"schema_version\": 1\n}\n");
}

/// A terminal may obey the control characters of its second range, and those are more than ASCII.
TEST(Json, ADocumentIsAscii)
{
    EXPECT_EQ(RenderJsonDocument({{"text", "\x1b[31m\u009b\u00e9\U0001f3a5"}}),
              "{\n  \"schema_version\": 1,\n  \"text\": \"\\u001b[31m\\u009b\\u00e9\\ud83c\\udfa5\"\n}\n");
}

TEST(JsonWriter, WritesWhatTheWholeDocumentWouldBe)
{
    const Json file = {{"name", "caf\u00e9\n"}, {"sizes", {1, 2}}, {"none", Json::array()}};
    const Json whole = {
        {"first", nullptr}, {"files", {file, file}}, {"empty", Json::array()}, {"part", {{"list", {1}}}}};
    for (const bool oneLine : {false, true}) {
        std::string text;
        JsonWriter json([&text](std::string_view part) { return !(text += part).empty(); }, oneLine);
        json.Member("first", nullptr);
        json.BeginArray("files");
        json.Element(file);
        json.Element(file);
        json.End();
        json.BeginArray("empty");
        json.End();
        json.BeginObject("part");
        json.BeginArray("list");
        json.Element(1);
        EXPECT_TRUE(json.Finish());
        EXPECT_EQ(text, oneLine ? RenderJsonLine(whole) : RenderJsonDocument(whole));
    }
}

TEST(JsonWriter, ALongListGoesOutInParts)
{
    std::size_t largest = 0;
    std::size_t total = 0;
    JsonWriter json(
        [&](std::string_view part) {
            largest = std::max(largest, part.size());
            total += part.size();
            return true;
        },
        false);
    json.BeginArray("files");
    for (int item = 0; item < 100000; ++item) {
        json.Element({{"name", "some name"}});
    }
    EXPECT_TRUE(json.Finish());
    EXPECT_GT(total, 3000000U);
    EXPECT_LT(largest, 100000U);
}

TEST(JsonWriter, StopsWritingWhenNobodyReads)
{
    int parts = 0;
    JsonWriter json([&](std::string_view) { return ++parts < 1; }, true);
    json.BeginArray("files");
    for (int item = 0; item < 100000; ++item) {
        json.Element("some name");
    }
    EXPECT_FALSE(json.Finish());
    EXPECT_EQ(parts, 1);
}

TEST(Suggestions, WordsTooLongForASlipAreNotCompared)
{
    const std::string word(64, 'a');
    EXPECT_EQ(Suggest(word, {word + "b", "other"}), std::vector<std::string>{word + "b"});
    EXPECT_EQ(Suggest(word + "b", {word + "b"}), std::vector<std::string>());
}

TEST(Suggestions, CandidatesOfAnotherLengthAreNotMeant)
{
    EXPECT_EQ(Suggest("file", {std::string(100000, 'f'), "files", "fil"}), (std::vector<std::string>{"files", "fil"}));
}

TEST(Words, ALongTextIsCutBetweenCharacters)
{
    EXPECT_EQ(QuotedShort(std::string(60, 'x')), "'" + std::string(60, 'x') + "'");
    EXPECT_EQ(QuotedShort(std::string(59, 'x') + "\u00e9"), "'" + std::string(59, 'x') + "...'");
    EXPECT_EQ(Quoted(std::string(61, 'x')), "'" + std::string(61, 'x') + "'");
}

TEST(Words, NumbersAndCounts)
{
    EXPECT_EQ(Counted(1, "item") + ", " + Counted(2, "item"), "1 item, 2 items");
    EXPECT_EQ(TwoDigits(9) + TwoDigits(10) + TwoDigits(-1), "0910-1");
}

TEST(Json, AnyTextBecomesUtf8)
{
    EXPECT_EQ(Utf8(""), "");
    EXPECT_EQ(Utf8("caf\u00e9 \x1b"), "caf\u00e9 \x1b"); // escaped when it is rendered
    EXPECT_EQ(Utf8("caf\xe9"), "caf\\xe9");
    EXPECT_EQ(Utf8("\xed\xa0\x80"), "\\xed\\xa0\\x80"); // a surrogate
    EXPECT_EQ(Utf8(std::string("a\0b", 3)), "a\\x00b");
    std::string all;
    for (int byte = 0; byte < 256; ++byte) {
        all += static_cast<char>(byte);
        EXPECT_EQ(Json::parse(RenderJsonDocument({{"text", Utf8(all)}}))["text"], Utf8(all));
    }
}

} // namespace
