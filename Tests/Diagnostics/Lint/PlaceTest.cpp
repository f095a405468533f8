#include <algorithm>
#include <sstream>

#include <gmock/gmock.h>

#include "Diagnostics/Lint/Render.h"
#include "Tests/Diagnostics/Lint/Documents.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A document of one line, whose "order" is misspelt after `before`.
std::string OneLine(const std::string& before)
{
    return "<rsp state='ok'><schedule start_time='09:00:00' end_time='18:00:00'>" + before +
           "<item id='1' Order='1'><name>a</name><size>5</size><format>b</format></item></schedule></rsp>";
}

TEST(LintPlace, CountsCodePointsAsColumns)
{
    EXPECT_THAT(PlacesIn(OneLine("")), ElementsAre("1:82-87 misspelt-attribute"));
    EXPECT_THAT(PlacesIn(OneLine("<!--ä-->")), ElementsAre("1:90-95 misspelt-attribute"));
    EXPECT_THAT(PlacesIn(OneLine("<!--€\xF0\x9F\x8E\xAC-->")), ElementsAre("1:91-96 misspelt-attribute"));
    EXPECT_THAT(PlacesIn(OneLine("\t")), ElementsAre("1:83-88 misspelt-attribute"));
}

TEST(LintPlace, GivesAByteOrderMarkNoColumn)
{
    EXPECT_THAT(PlacesIn("\xEF\xBB\xBF" + OneLine("")), ElementsAre("1:82-87 misspelt-attribute"));
    EXPECT_THAT(PlacesIn("\xEF\xBB\xBF<rsp/>"), ElementsAre("1:1-7 state-missing", "1:1-7 no-schedule"));
}

TEST(LintPlace, CountsBytesInAnEncodingOfSingleBytes)
{
    const std::string document = "<?xml version='1.0' encoding='ISO-8859-1'?>\n" + OneLine("<!--\xE4\xF6-->");
    EXPECT_THAT(PlacesIn(document), ElementsAre("2:91-96 misspelt-attribute"));
    const lint::Report report = lint::Lint(document, TestOptions());
    EXPECT_THAT(report.findings.at(0).source.text, testing::HasSubstr("<!--äö--><item"));
}

TEST(LintPlace, KnowsAllLineEnds)
{
    EXPECT_THAT(PlacesIn(OneLine("\n\n")), ElementsAre("3:14-19 misspelt-attribute"));
    EXPECT_THAT(PlacesIn(OneLine("\r\n\r\n")), ElementsAre("3:14-19 misspelt-attribute"));
    EXPECT_THAT(PlacesIn(OneLine("\r\r")), ElementsAre("3:14-19 misspelt-attribute"));
    EXPECT_THAT(PlacesIn(OneLine("\n\r")), ElementsAre("3:14-19 misspelt-attribute"));
}

TEST(LintPlace, FindsAttributesInTagsOfManyShapes)
{
    const auto places = [](const std::string& tag) {
        return PlacesIn("<rsp state='ok'><schedule start_time='09:00:00' end_time='18:00:00'>\n" + tag +
                        "<name>a</name><size>5</size><format>b</format></item></schedule></rsp>");
    };
    EXPECT_THAT(places("<item id = \"a'>=/b\"\n order\t=\n '1x'  >"), ElementsAre("4:3-5 number-not-digits"));
    EXPECT_THAT(places("<item\nid='&lt;&#10;'\norder='1'\ncolour='&gt;'>"), ElementsAre("5:1-7 unknown-attribute"));
    EXPECT_THAT(places("<item id='1' order=''>"), ElementsAre("2:21-21 number-not-digits"));
}

TEST(LintPlace, MarksAStretchUpToTheEndOfItsFirstLine)
{
    EXPECT_THAT(PlacesIn(GoodDocumentWith("1048576", "104\n8576")), ElementsAre("3:53-56 size-in-pieces"));
}

TEST(LintPlace, CutsLongLinesAroundThePlace)
{
    const std::string remark = "<!--" + std::string(400, 'x') + "-->";
    const lint::Report report = lint::Lint(OneLine(remark) + remark, TestOptions());
    const Snippet& source = report.findings.at(0).source;
    EXPECT_TRUE(source.cutBefore);
    EXPECT_TRUE(source.cutAfter);
    EXPECT_EQ(source.text.substr(source.start, source.length), "Order");
    EXPECT_EQ(source.start, 120U);
    EXPECT_EQ(source.text.size(), 240U);
}

TEST(LintPlace, CutsLongLinesBetweenCharacters)
{
    for (const std::string pad : {"", "x", "xx"}) {
        std::string euros = "<!--";
        for (int i = 0; i < 100; ++i) {
            euros += "€";
        }
        const lint::Report report = lint::Lint(OneLine(euros.append(pad).append("-->")), TestOptions());
        const std::string& text = report.findings.at(0).source.text;
        EXPECT_EQ(static_cast<unsigned char>(text.front()), 0xE2U) << pad.size();
    }
}

TEST(LintPlace, IsTheSameHoweverTheBytesCome)
{
    // The parser scans a token again from its start at each step: the smaller the steps, the shorter the tokens.
    struct {
        std::size_t step;
        std::size_t length;
    } const cases[] = {{1, 20000}, {7, 60000}, {4096, 300000}, {262143, 300000}};
    for (const auto& [step, length] : cases) {
        std::string document = OneLine("<!--" + std::string(length, 'y') + "-->\n");
        document += "<!--" + std::string(2 * length, '<') + "-->\n\r\n";
        const std::string expected = lint::Render({"f", "", lint::Lint(document, TestOptions())});
        EXPECT_THAT(expected, testing::HasSubstr("f:2:14: error: unknown attribute 'Order'"));
        std::size_t given = 0;
        const auto source = [&, most = step](char* buffer, std::size_t size) {
            const std::size_t count = std::min({size, most, document.size() - given});
            document.copy(buffer, count, given);
            given += count;
            return count;
        };
        EXPECT_EQ(lint::Render({"f", "", lint::Lint(source, TestOptions())}), expected) << step;
    }
}

TEST(LintPlace, ReportsTextInPiecesOnlyWhereTheTvSeesPieces)
{
    // The parser is fed in pieces of a quarter of a megabyte: sizes all around the first border.
    std::ostringstream text;
    text << "<rsp state='ok'><!--" << std::string(255000, 'x')
         << "-->\n<schedule start_time='09:00:00' end_time='09:30:00'>\n";
    for (int item = 0; item < 200; ++item) {
        text << "<item id='" << item << "' order='" << item << "'><name>n" << item
             << "</name><size>12345678901234</size><format>mp4</format></item>\n";
    }
    text << "</schedule>\n</rsp>\n";
    std::string document = text.str();
    for (int shift = 0; shift < 90; ++shift) {
        document.insert(0, " ");
        EXPECT_THAT(PlacesIn(document), IsEmpty()) << shift;
    }
}

} // namespace
