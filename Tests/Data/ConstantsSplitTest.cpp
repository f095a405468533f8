#include "Tests/Data/ConstantsFixture.h"
#include "Tests/Data/TextPieces.h"
#include "Tests/VQMSerialize/TokenDocument.h"

#include <algorithm>

// Text means nothing to the constants, in one piece or in many; keys and values are whole.

using recorder::Lines;
using recorder::Take;

namespace {

class ConstantsSplit : public ConstantsTest {
protected:
    const std::string kText = Line("ReadFrom", "CVQMScheduleContainer::ReadFrom - TEXT step not used\n");
    const std::string kUnknown = Line("OnStartElement", "OnStartElement - Unknown Element\n");
    const std::string kUnknownEnd = Line("OnEndElement", "OnEndElement - Unknown Element\n");
    const std::string kClosed = Line("OnEndElement", "OnEndElement - Data element closed\n");
    const std::string kEnd = ParserLine("ParseHttpResponse End !!!!\n");
};

} // namespace

TEST_F(ConstantsSplit, EveryPieceIsOneLineAndNoChange)
{
    CVQMDataConstants constants;
    const auto expectIgnored = [&](const Pieces& pieces) {
        for (const std::string& piece : pieces) {
            Deliver({PARSING_ELEMENT_DATA, "", {}, piece}, constants);
        }
        EXPECT_EQ(Take(), Lines(pieces.size(), kText)) << pieces.size();
    };
    for (const char* text : {"", "x", "key=value", "<Data/> \xc3\xa9%"}) {
        ForEachSplit(text, expectIgnored);
    }
    const std::string longText(300, 'x');
    for (std::size_t size = 1; size <= longText.size(); ++size) {
        expectIgnored(PiecesOf(longText, size));
    }
    EXPECT_EQ(OpenConstants::m_DataCache, Cache());
}

TEST_F(ConstantsSplit, TheParsersOwnCutsAreIgnoredToo)
{
    const std::string text = "9x8y7z";
    const std::string prolog = CutEntities();
    for (const Cut& cut : Cuts()) {
        for (std::size_t at = 0; at <= text.size(); ++at) {
            OpenConstants::m_DataCache.clear();
            const std::string content = cut.content(text, at);
            EXPECT_TRUE(Parse(prolog + "<c>" + content + "<Data key='a' value='1'>" + content + "</Data></c>"));
            const std::size_t pieces = PiecesOfCut(cut, text, at).size();
            Lines expected = {kUnknown};
            expected.insert(expected.end(), 2 * pieces, kText);
            expected.insert(expected.end(), {kClosed, kUnknownEnd, kEnd});
            EXPECT_EQ(Take(), expected) << cut.what << ' ' << at;
            EXPECT_EQ(OpenConstants::m_DataCache, (Cache{{"a", "1"}})) << cut.what << ' ' << at;
        }
    }
}

TEST_F(ConstantsSplit, KeysAndValuesAreWholeHoweverTheyAreWritten)
{
    const std::string prolog = CutEntities();
    const std::string key = "ScheduleFile";
    const std::string value = "schedule2";
    for (const Cut& cut : Cuts()) {
        if (cut.content("x", 0).find('<') != std::string::npos) {
            continue; // no markup in a value
        }
        for (std::size_t at = 0; at <= key.size(); ++at) {
            OpenConstants::m_DataCache.clear();
            EXPECT_TRUE(Parse(prolog + "<Data key='" + cut.content(key, at) + "' value='" +
                              cut.content(value, std::min(at, value.size())) + "'/>"));
            EXPECT_EQ(OpenConstants::m_DataCache, (Cache{{key, value}})) << cut.what << ' ' << at;
        }
    }
}

TEST_F(ConstantsSplit, ALongValueIsWholeInEveryEncoding)
{
    std::string latin1;
    std::string utf8;
    for (int i = 0; i < 5000; ++i) {
        latin1 += '\xe9';
        utf8 += "\xc3\xa9";
    }
    EXPECT_TRUE(Parse("<?xml version='1.0' encoding='ISO-8859-1'?><Data key='" + latin1 + "' value='" + latin1 + "'>" +
                      latin1 + "</Data>"));
    EXPECT_EQ(OpenConstants::m_DataCache, (Cache{{utf8, utf8}}));
    // The parser's buffer holds 512 of the two-byte characters.
    EXPECT_EQ(Take(), [this] {
        Lines lines(10, kText);
        lines.insert(lines.end(), {kClosed, kEnd});
        return lines;
    }());
}
