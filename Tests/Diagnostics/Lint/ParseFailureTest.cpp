#include <gmock/gmock.h>

#include "Diagnostics/Lint/Lint.h"
#include "Diagnostics/Lint/ParseErrorText.h"
#include "Tests/Diagnostics/Lint/Documents.h"

#include <algorithm>

namespace {

using namespace std::string_literals;

/// A document that does not parse, and what is said of it.
struct Case {
    const char* name;
    std::string document;
    std::string place;
    std::string message;
};

void PrintTo(const Case& value, std::ostream* stream)
{
    *stream << value.name;
}

const std::string kGood = kGoodDocument;
const std::string kXml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

std::string Good(const std::string& what, const std::string& replacement)
{
    return GoodDocumentWith(what, replacement);
}

std::string Declared(const std::string& encoding, const std::string& document)
{
    return "<?xml version='1.0' encoding='" + encoding + "'?>" + document;
}

constexpr char kFirst[] = "'<?xml' must be the first thing in the file; delete ";
constexpr char kAmpersand[] = "'&' begins no entity here; write &amp; for the character itself";
constexpr char kLess[] = "'<' begins no tag here; write &lt; for the character itself";
constexpr char kStraight[] = "' is a typographic quote; write straight ones: \" or '";
constexpr char kNoDeclaration[] = "this is no XML declaration; write <?xml version=\"1.0\" encoding=\"UTF-8\"?>";
constexpr char kSecond[] = "a second document begins here, after the end of the first; keep one of them";
constexpr char kCut[] = " is not closed; copy it again, or write what is missing";

const Case kEncodings[] = {
    {"AByteOfWindows1252", Good("intro", "F\xFChrung"), "3:36",
     "the byte FC is not UTF-8: it is '\u00FC' in windows-1252; save the document as UTF-8"},
    {"AByteThatWindows1252LacksToo", Good("intro", "F\x81rung"), "3:36",
     "the byte 81 is not UTF-8; save the document as UTF-8"},
    {"AByteThatIsNotAscii", Declared("US-ASCII", "<rsp state='\xFC'/>"), "1:54",
     "the byte FC is not US-ASCII: it is '\u00FC' in windows-1252; save the document as UTF-8 and write "
     "encoding=\"UTF-8\""},
    {"Utf16", "\xFF\xFE<\0r\0s\0p\0/\0>\0"s, "1:1",
     "the document is encoded in UTF-16, which editors also call \"Unicode\"; save it as UTF-8"},
    {"Utf16WithoutAMark", "\0<\0r\0s\0p\0/\0>"s, "1:1",
     "the document is encoded in UTF-16, which editors also call \"Unicode\"; save it as UTF-8"},
    {"Utf32", "\xFF\xFE\0\0<\0\0\0"s, "1:1",
     "the document is encoded in UTF-32, which editors also call \"Unicode\"; save it as UTF-8"},
    {"AnEncodingThatIsNotKnown", Declared("windows-1252", "<rsp a='\xE9'/>"), "1:31",
     "the document says that its encoding is 'windows-1252', which the TV does not know; save it as UTF-8 and write "
     "encoding=\"UTF-8\""},
    {"AnEncodingThatIsNotTrue", Declared("UTF-16", "<rsp a='\xE9'/>"), "1:31",
     "the document says that its encoding is 'UTF-16', and it is not; save it as UTF-8 and write encoding=\"UTF-8\""},
    {"TwoByteOrderMarks", "\uFEFF\uFEFF" + kGood, "1:1", "a byte order mark inside the document; delete it"},
};

const Case kWholeFiles[] = {
    {"NoByte", "", "1:1", "the document is empty; copy it again"},
    {"ZeroBytes", "\0\0\0"s, "1:1", "the file begins with a zero byte, where a text ends for the TV; copy it again"},
    {"WhiteSpace", "\n\n ", "3:2", "the document ends before its first element; copy it again"},
    {"AnHtmlPage", "<!DOCTYPE html>\n<html><head><meta charset=utf-8></head></html>", "1:1",
     "the file holds an HTML page, perhaps a server's error message; fetch the file again"},
    {"AnHtmlPageBehindAComment", "\uFEFF<?xml version='1.0'?> <!-- x -->\n<HTML><br></HTML>", "1:1",
     "the file holds an HTML page, perhaps a server's error message; fetch the file again"},
    {"AnArchive", "PK\3\4\x14\0\6\0"s, "1:1",
     "the file holds a ZIP archive or an office document; unpack it, or save it as plain text"},
    {"AFilm", "\0\0\0\x18"s + "ftypmp42", "1:1", "the file holds a film; copy the right file"},
    {"Json", "{\"schedule\": []}", "1:1", "the file holds JSON; copy the right file"},
    {"Noise", "\377\1\2\3", "1:1", "the file holds no text; copy the right file"},
    {"CutInATag", kGood.substr(0, 60), "2:3",
     "the document ends in the middle, inside what begins here; copy it again"},
    {"CutInAText", kGood.substr(0, kGood.find("tro<")), "3:37",
     "the document ends in the middle: 'name' of line 3"s + kCut},
    {"CutBeforeTheLastTag", kGood.substr(0, kGood.find("</rsp")), "5:1",
     "the document ends in the middle: 'rsp' of line 1"s + kCut},
    {"CutByZeroBytes", kGood.substr(0, kGood.find("</rsp")) + "\0\0"s, "5:1",
     "a zero byte ends the document in the middle: 'rsp' of line 1"s + kCut},
    {"TwoDocuments", kGood + kGood, "6:1", kSecond},
    {"TwoDocumentsWithDeclarations", kXml + kGood + kXml + kGood, "7:1", kSecond},
    {"TextBehindTheEnd", kGood + "bye", "6:1", "text after the end of the document; delete it"},
    {"AnEndTagTooMany", kGood + "</rsp>", "6:2", "an end tag that closes nothing; delete it"},
    {"AnEmptyFirstLine", "\n" + kXml + kGood, "2:1", kFirst + "the empty line before it"s},
    {"ThreeEmptyFirstLines", "\r\n\r\n\r\n" + kXml + kGood, "4:1", kFirst + "the 3 empty lines before it"s},
    {"AnEmptyLineBehindAMark", "\uFEFF\n" + kXml + kGood, "2:1", kFirst + "the empty line before it"s},
    {"BlanksFirst", "  " + kXml + kGood, "1:3", kFirst + "the blanks before it"s},
    {"ACommentFirst", "<!-- x -->" + kXml + kGood, "1:11", kFirst + "what stands before it"s},
    {"TextFirst", "Schedule " + kGood, "1:1", "text before the first tag; delete it"},
    {"ADeclarationWithoutVersion", "<?xml encoding='UTF-8'?>" + kGood, "1:7", kNoDeclaration},
    {"ADeclarationInUpperCase", "<?XML version='1.0'?>" + kGood, "1:6", kNoDeclaration},
};

const Case kMarkup[] = {
    {"TypographicQuotes", Good("'09:00:00'", "\u201C09:00:00\u201D"), "2:24", "'\u201C"s + kStraight},
    {"TypographicQuotesOfWindows1252",
     Good("'09:00:00'", "\x93"
                        "09:00:00\x94"),
     "2:24",
     "the byte 93 is not UTF-8: it is '\u201C' in windows-1252; write straight quotes, and save the document as UTF-8"},
    {"TypographicQuotesInTheDeclaration", "<?xml version=\u201D1.0\u201D?>" + kGood, "1:15", "'\u201D"s + kStraight},
    {"ATypographicQuoteAtTheEndAlone", Good("'09:00:00'", "'09:00:00\u2019"), "2:45",
     "a quote before this place is typographic: '\u2019'; write straight ones: \" or '"},
    {"NoQuotes", Good("'1'", "1"), "3:25",
     "a value must stand in quotes; write one before '1' and one where the value ends"},
    {"NoSecondQuote", Good("'A1'", "'A1"), "3:25", "a quote is missing: the value before '1' holds the next attribute"},
    {"NoBlankBetweenAttributes", Good("'A1' ", "'A1'"), "3:18", "a blank is missing before 'o'"},
    {"NoValue", Good("order='1'", "order"), "3:24",
     "the attribute before '>' has no value; write =\"\" with the value in it"},
    {"NoEndOfTheTag", Good("'1'>", "'1'"), "3:28", "the tag before '<' is not closed; write '>'"},
    {"ANoBreakSpaceInATag", Good(" order", "\u00A0order"), "3:18", "a no-break space in a tag; write a plain one"},
    {"AnAmpersand", Good("intro", "Tom & Jerry"), "3:40", kAmpersand},
    {"AnAmpersandBeforeALetter", Good("intro", "A&B"), "3:38", kAmpersand},
    {"AnAmpersandInAValue", Good("A1", "a?x=1&y=2"), "3:22", kAmpersand},
    {"AnEntityOfHtml", Good("intro", "a&nbsp;b"), "3:36",
     "the TV does not know '&nbsp;'; write the character itself, or &amp; for a plain '&'"},
    {"AReferenceToNoCharacter", Good("intro", "a&#0;b"), "3:36",
     "'&#0;' names no character that a document may hold; delete it"},
    {"ALessSignInAText", Good("intro", "a < b"), "3:38", kLess},
    {"ALessSignInAValue", Good("A1", "a<b"), "3:16", "'<' in a value; write &lt;, or ' where the value ends"},
    {"TheEndOfASectionInAText", Good("intro", "]]>"), "3:37",
     "']]>' in a text; write ]]&gt; for the characters themselves"},
    {"AControlCharacter", Good("intro", "in\x1Btro"), "3:37",
     "the control character 1B cannot stand in a document; delete it"},
    {"ACodeThatIsNoCharacter", Good("intro", "\uFFFF"), "3:35",
     "a code that is no character cannot stand in a document; delete it"},
    {"AnElementThatIsNotClosed", Good("</item>", ""), "4:5",
     "'</schedule>' stands here, but 'item' of line 3 is not closed yet; write </item> before it"},
    {"AnotherCaseAtTheEnd", Good("</item>", "</Item>"), "3:89",
     "'</Item>' does not close 'item' of line 3, for upper and lower case count; write </item>"},
    {"AnAttributeTwice", Good("order=", "id="), "3:19", "a second attribute 'id' in the same tag; delete one of them"},
    {"HyphensInAComment", Good("  </schedule>", "<!-- a -- b --></schedule>"), "4:10",
     "two hyphens in a comment; write one, or --> where the comment ends"},
    {"ACommentWithoutEnd", Good("  </schedule>", "<!-- a </schedule>"), "4:1",
     "the comment that begins here has no end; write -->, or copy the document again if it was cut off"},
    {"ASectionWithoutEnd", Good("intro", "<![CDATA[intro"), "6:1",
     "a section that begins with <![CDATA[ has no end; write ]]>, or copy the document again if it was cut off"},
};

class LintParseFailure : public testing::TestWithParam<Case> {};

TEST_P(LintParseFailure, SaysWhatIsWrongAndWhatToDo)
{
    const Case& expected = GetParam();
    const lint::Report report = lint::Lint(expected.document, TestOptions());
    const auto isFailure = [](const Diagnostic& finding) {
        return finding.id == "not-well-formed" || finding.id == "unreadable-encoding";
    };
    const auto found = std::find_if(report.findings.begin(), report.findings.end(), isFailure);
    ASSERT_NE(found, report.findings.end());
    EXPECT_EQ(found->message, expected.message);
    EXPECT_EQ(std::to_string(found->line) + ":" + std::to_string(found->column), expected.place);
    EXPECT_EQ(lint::ParseErrorText(expected.document), "line " + std::to_string(found->line) + ", column " +
                                                           std::to_string(found->column) + ": " + expected.message);
}

const auto kNameOfCase = [](const testing::TestParamInfo<Case>& info) { return info.param.name; };

INSTANTIATE_TEST_SUITE_P(Encodings, LintParseFailure, testing::ValuesIn(kEncodings), kNameOfCase);
INSTANTIATE_TEST_SUITE_P(WholeFiles, LintParseFailure, testing::ValuesIn(kWholeFiles), kNameOfCase);
INSTANTIATE_TEST_SUITE_P(Markup, LintParseFailure, testing::ValuesIn(kMarkup), kNameOfCase);

TEST(LintParseFailure, FindsTheCauseFarBehindTheBeginning)
{
    std::string document = "<rsp state='ok'>";
    for (int line = 0; line < 100000; ++line) {
        document += "\n<!-- a remark -->";
    }
    const lint::Report report = lint::Lint(document + "Tom & Jerry</rsp>", TestOptions());
    EXPECT_EQ(report.findings.back().message, kAmpersand);
    EXPECT_EQ(report.findings.back().line, 100001U);
}

} // namespace
