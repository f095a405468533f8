#include <algorithm>
#include <cstdlib>

#include "Tests/Data/ScheduleFixture.h"
#include "Tests/Data/TextPieces.h"

// What a text that arrives in pieces gives. Attributes never do.

using recorder::Lines;
using recorder::Take;

namespace {

/// What becomes of the pieces of a text.
enum class Taking {
    Joined,  ///< one text
    Last,    ///< the number of the last piece, whatever came before
    Ignored, ///< one log line each
};

const struct {
    const char* element; ///< none: the text stands in the item itself
    Taking taking;
} kTexts[] = {
    {"name", Taking::Joined},   {"size", Taking::Last},   {"format", Taking::Joined},  {"", Taking::Ignored},
    {"title", Taking::Ignored}, {"rsp", Taking::Ignored}, {"policy", Taking::Ignored}, {"rech_info", Taking::Ignored},
};

std::string Joined(const Pieces& pieces)
{
    std::string text;
    for (const std::string& piece : pieces) {
        text += piece;
    }
    return text;
}

class ScheduleSplit : public ScheduleTest {
protected:
    /// What one item with these pieces gives, without an end of its element where that would add
    /// to the item.
    static std::string Item(const std::string& element, Taking taking, const Pieces& pieces)
    {
        const std::string text = Joined(pieces);
        switch (taking) {
        case Taking::Joined:
            return element == "name" ? "item |" + text + "|0||0" : "item |." + text + "|0|" + text + "|0";
        case Taking::Last:
            return "item ||" + (pieces.empty() ? "0" : std::to_string(Number(pieces.back()))) + "||0";
        default:
            return "item ||0||0";
        }
    }

    static unsigned long long Number(const std::string& text)
    {
        return text.empty() || text[0] < '0' || text[0] > '9' ? 0 : std::strtoull(text.c_str(), nullptr, 10);
    }

    /// Tells the container of one item with one text.
    void Tell(const std::string& element, const Pieces& pieces)
    {
        Start("schedule");
        Start("item");
        if (!element.empty()) {
            Start(element.c_str());
        }
        for (const std::string& piece : pieces) {
            Piece(piece);
        }
        if (!element.empty()) {
            End(element.c_str());
        }
        End("item");
        End("schedule");
    }

    void ExpectItem(const std::string& element, Taking taking, const Pieces& pieces)
    {
        container = CVQMScheduleContainer();
        Tell(element, pieces);
        ASSERT_EQ(Policy().listSchedule.size(), 1U);
        EXPECT_EQ(LastChange(), Item(element, taking, pieces)) << element << ' ' << pieces.size();
        const Lines lines = Take();
        const auto ignored =
            std::count(lines.begin(), lines.end(), ScheduleLine("OnElementData", "OnElementData - Unknown Element \n"));
        EXPECT_EQ(static_cast<std::size_t>(ignored), taking == Taking::Ignored ? pieces.size() : 0U) << element;
    }
};

} // namespace

TEST_F(ScheduleSplit, EveryWayToCutAShortTextGivesWhatIsDescribed)
{
    for (const auto& [element, taking] : kTexts) {
        for (const char* text : {"", "7", "90071992", "12 .x\xc3\xa9%"}) {
            ForEachSplit(text,
                         [&, name = element, how = taking](const Pieces& pieces) { ExpectItem(name, how, pieces); });
        }
    }
}

TEST_F(ScheduleSplit, PiecesOfEverySizeGiveWhatIsDescribed)
{
    std::string text;
    for (int i = 0; i < 40; ++i) {
        text += std::to_string(i * 7919);
    }
    for (const auto& [element, taking] : kTexts) {
        for (std::size_t size = 1; size <= text.size(); ++size) {
            const Pieces pieces = PiecesOf(text, size);
            if (taking == Taking::Last && pieces.back().size() > 19) {
                continue; // beyond 64 bits; the conversion's own tests have that
            }
            ExpectItem(element, taking, pieces);
        }
    }
}

TEST_F(ScheduleSplit, EmptyPiecesCountForASizeOnly)
{
    ExpectItem("name", Taking::Joined, {"", "a", "", "b", ""});
    ExpectItem("format", Taking::Joined, {"", "a", "", "b", ""});
    ExpectItem("size", Taking::Last, {"5", ""});
    ExpectItem("size", Taking::Last, {"", "5"});
    ExpectItem("", Taking::Ignored, {"", ""});
}

// The parser cuts a text where anything but characters stands in it: what comes is what the same
// pieces give without a parser, log line for log line.
TEST_F(ScheduleSplit, TheParsersOwnCutsGiveTheSame)
{
    const std::string text = "1048576";
    const std::string prolog = CutEntities();
    for (const Cut& cut : Cuts()) {
        for (const auto& [element, taking] : kTexts) {
            for (std::size_t at = 0; at <= text.size(); ++at) {
                const std::string open = *element != '\0' ? '<' + std::string(element) + '>' : "";
                const std::string close = *element != '\0' ? "</" + std::string(element) + '>' : "";
                const Pieces pieces = PiecesOfCut(cut, text, at);

                container = CVQMScheduleContainer();
                Take();
                Tell(element, pieces);
                Lines expected = Take();
                expected.push_back(recorder::LogOf("Quillmere", "VQMXMLSerialize.cpp")
                                       .Debug("Deserialize", "ParseHttpResponse End !!!!\n"));

                container = CVQMScheduleContainer();
                EXPECT_TRUE(
                    Parse(prolog + "<schedule><item>" + open + cut.content(text, at) + close + "</item></schedule>"));
                EXPECT_EQ(Take(), expected) << cut.what << ' ' << element << ' ' << at;
                EXPECT_EQ(LastChange(), Item(element, taking, pieces)) << cut.what << ' ' << at;
            }
        }
    }
}

TEST_F(ScheduleSplit, AnElementInsideATextTakesOverOrIsPassedBy)
{
    const struct {
        const char* item;
        const char* result;
    } cases[] = {
        {"<name>a<b/>c</name>", "item |ac|0||0"},
        {"<size>12<b/>34</size>", "item ||34||0"},
        {"<name>a<size>5</size>lost</name>", "item |a|5||0"},
        {"<size>5<name>a</name>6</size>", "item |a|5||0"},
        {"<name>a<format>b</format>lost</name>", "item |a.b|0|b|0"},
        {"<format>a<format>b</format>lost</format>", "item |.ab|0|ab|0"},
        {"<name>a<name>b</name>lost</name>", "item |ab|0||0"},
        {"<size>1</size> <size>2</size> <size>x</size>", "item ||0||0"},
        {"<name>a</name> <name>b</name> <format>c</format> <name>d</name>", "item |ab.cd|0|c|0"},
    };
    for (const auto& expected : cases) {
        container = CVQMScheduleContainer();
        EXPECT_TRUE(Parse("<schedule><item>" + std::string(expected.item) + "</item></schedule>"));
        EXPECT_EQ(LastChange(), expected.result) << expected.item;
    }
}

// Where the parser has to convert, it hands on what its buffer of 1024 bytes holds.
TEST_F(ScheduleSplit, ALongTextInAnotherEncodingComesInThePartsOfTheParsersBuffer)
{
    const std::string latin1 = "<?xml version='1.0' encoding='ISO-8859-1'?>";
    for (const std::size_t length : {1023U, 1024U, 1025U, 2048U, 2049U, 5000U}) {
        const std::string text(length, '\xe9');
        std::string utf8;
        for (std::size_t i = 0; i < length; ++i) {
            utf8 += "\xc3\xa9";
        }
        container = CVQMScheduleContainer();
        EXPECT_TRUE(
            Parse(latin1 + "<schedule><item><name>" + text + "</name><format>" + text + "</format></item></schedule>"));
        EXPECT_EQ(LastChange(), "item |" + utf8 + '.' + utf8 + "|0|" + utf8 + "|0") << length;

        // Leading zeros make a long number of a small one.
        const std::string digits = std::string(length - 3, '0') + "123";
        const std::size_t last = (length - 1) % 1024 + 1;
        const std::string inParts = std::to_string(Number(digits.substr(length - last)));
        container = CVQMScheduleContainer();
        EXPECT_TRUE(Parse(latin1 + "<schedule><item><size>" + digits + "</size></item></schedule>"));
        EXPECT_EQ(LastChange(), "item ||" + inParts + "||0") << length;
        container = CVQMScheduleContainer();
        EXPECT_TRUE(Parse("<schedule><item><size>" + digits + "</size></item></schedule>"));
        EXPECT_EQ(LastChange(), "item ||123||0") << length << " in UTF-8, whole";
    }
}

TEST_F(ScheduleSplit, ValuesOfAttributesAreWholeHoweverTheyAreWritten)
{
    const std::string prolog = CutEntities();
    const auto parse = [&](const std::function<std::string(const std::string&)>& written) {
        const auto attribute = [&](const std::string& name, const std::string& value) {
            return ' ' + name + "='" + written(value) + '\'';
        };
        container = CVQMScheduleContainer();
        EXPECT_TRUE(Parse(prolog + "<rsp" + attribute("state", "ok") + "><policy" + attribute("period", "30") +
                          "/><project" + attribute("id", "1001") + attribute("version", "v12") +
                          attribute("expiration", "2016x12y31") + "/><schedule" + attribute("start_time", "09:30:15") +
                          "><item" + attribute("id", "A1") + attribute("order", "12") + "/></schedule><rech_info" +
                          attribute("IsMaster", "1") + attribute("IPAddr", "player") + "/></rsp>"));
        return Changes(Policy());
    };
    const Lines expected = {"bError=0",
                            "nCheckPeriod=30",
                            "nProjectID=1001",
                            "strVersion=v12",
                            "stExpiration=2016-12-31 0:0:0 0",
                            "IsMaster=1",
                            "IPAddr=player",
                            "schedule 0-0-0 9:30:15 0 to 0-0-0 0:0:0 0",
                            "item A1||0||12"};
    EXPECT_EQ(parse([](const std::string& value) { return value; }), expected);
    EXPECT_EQ(parse([](const std::string& value) {
                  std::string written;
                  for (const char character : value) {
                      written += "&#" + std::to_string(static_cast<int>(character)) + ';';
                  }
                  return written;
              }),
              expected);
    EXPECT_EQ(parse([](const std::string& value) {
                  std::string written = "&none;";
                  for (const char character : value) {
                      written += "&c" + std::to_string(static_cast<int>(character)) + ";&none;";
                  }
                  return written;
              }),
              expected);
}
