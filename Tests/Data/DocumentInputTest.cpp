#include <algorithm>
#include <iterator>

#include "Tests/Data/ConstantsFixture.h"
#include "Tests/Data/ScheduleFixture.h"
#include "Tests/VQMSerialize/EmptyText.h"

// Any bytes as a document of either kind: the ways to write the same one, and what is none.

using recorder::Lines;
using recorder::Take;

namespace {

std::string Refusal(const std::string& document)
{
    return recorder::LogOf("Quillmere", "VQMXMLSerialize.cpp").Debug("Deserialize", RefusalMessage(document));
}

Lines Refusals(const Lines& documents)
{
    Lines lines;
    std::transform(documents.begin(), documents.end(), std::back_inserter(lines), Refusal);
    return lines;
}

class ScheduleInput : public ScheduleTest {};
class ConstantsInput : public ConstantsTest {};

/// A letter that each encoding writes in its own way.
constexpr char kUtf8Letter[] = "\xc3\xa9";
constexpr char kLatin1Letter[] = "\xe9";

std::string ScheduleOf(const std::string& letter)
{
    return "<rsp state='ok'><project version='" + letter + "'/><schedule><item id='" + letter + "'><name>a" + letter +
           "b</name></item></schedule></rsp>";
}

std::string ConstantsOf(const std::string& letter)
{
    return "<c>" + letter + "<Data key='" + letter + "' value='a" + letter + "b'/></c>";
}

/// Ways to write a document that mean the same.
const struct {
    const char* what;
    std::string before;
    const char* letter;
    std::string behind;
} kSame[] = {
    {"nothing around", "", kUtf8Letter, ""},
    {"a mark", "\xef\xbb\xbf", kUtf8Letter, ""},
    {"white space", " \t\r\n", kUtf8Letter, " \t\r\n"},
    {"UTF-8", "<?xml version='1.0' encoding='UTF-8'?>", kUtf8Letter, ""},
    {"utf-8 and a mark", "\xef\xbb\xbf<?xml version=\"1.0\" encoding=\"utf-8\" standalone=\"no\"?>", kUtf8Letter, ""},
    {"Latin-1", "<?xml version='1.0' encoding='ISO-8859-1'?>", kLatin1Letter, ""},
    {"references in UTF-8", "", "&#233;", ""},
    {"references in ASCII", "<?xml version='1.0' encoding='US-ASCII'?>", "&#xE9;", ""},
    {"entities", "<!DOCTYPE x [<!ENTITY e '&#233;'>]>", "&e;", ""},
    {"entities in entities", "<!DOCTYPE x [<!ENTITY f '\xc3\xa9'><!ENTITY e '&f;'>]>", "&e;", ""},
    {"comments", "<!-- <rsp> --><!---->", kUtf8Letter, "<!-- </rsp> -->"},
    {"instructions", "<?xml-stylesheet href='x'?><?p?>", kUtf8Letter, "<?p?>"},
    {"a document type", "<!DOCTYPE rsp SYSTEM 'nowhere.dtd' [<!ELEMENT rsp ANY>]>", kUtf8Letter, ""},
};

/// What is refused before there is any event.
const std::string kRefused[] = {
    "",
    " \n",
    "\xef\xbb\xbf",
    "text",
    "\xc3",
    "\xff\xfe",
    "\xfe\xff",
    std::string("\xff\xfe<\0a\0/\0>\0", 10),
    std::string("\xfe\xff\0<\0a\0/\0>", 10),
    std::string("<\0a\0/\0>\0", 8),
    std::string("\0<\0a\0/\0>", 8),
    std::string("\0\0\xfe\xff\0\0\0<", 8),
    "<!-- only -->",
    "<?xml version='1.0'?>",
    " <?xml version='1.0'?><a/>",
    "<?xml version='1.0' encoding='UTF-16'?><a/>",
    "<?xml version='1.0' encoding='KOI8-R'?><a/>",
    "<?xml version='1.0' encoding=''?><a/>",
    "<!DOCTYPE a [<!ENTITY e 'x'>]>",
    "<a b='\xe9'/>",
    "<\xe9/>",
    "<a b='1' b='2'/>",
    "<a b=1/>",
    "<a b/>",
    "<1/>",
    "< a/>",
    "</a>",
    "&amp;",
    "<![CDATA[x]]>",
    "{\"rsp\": \"ok\"}",
};

/// Each byte, alone and before some that may mean something behind it.
Lines ShortestDocuments()
{
    Lines documents;
    for (int first = 0; first < 256; ++first) {
        for (const char* second : {"", "a", "<", ">", "\n", "\xbb", "\xfe", "\xff"}) {
            documents.push_back(static_cast<char>(first) + std::string(second));
        }
    }
    return documents;
}

} // namespace

TEST_F(ScheduleInput, OneDocumentWrittenInManyWaysIsOnePolicy)
{
    for (const auto& way : kSame) {
        container = CVQMScheduleContainer();
        EXPECT_TRUE(Parse(way.before + ScheduleOf(way.letter) + way.behind)) << way.what;
        EXPECT_EQ(Changes(Policy()),
                  (Lines{"bError=0", "strVersion=\xc3\xa9", "schedule 0-0-0 0:0:0 0 to 0-0-0 0:0:0 0",
                         "item \xc3\xa9|a\xc3\xa9"
                         "b|0||0"}))
            << way.what;
    }
}

TEST_F(ConstantsInput, OneDocumentWrittenInManyWaysIsOneSetOfValues)
{
    for (const auto& way : kSame) {
        OpenConstants::m_DataCache.clear();
        EXPECT_TRUE(Parse(way.before + ConstantsOf(way.letter) + way.behind)) << way.what;
        EXPECT_EQ(OpenConstants::m_DataCache, (Cache{{"\xc3\xa9", "a\xc3\xa9"
                                                                  "b"}}))
            << way.what;
    }
}

TEST_F(ScheduleInput, InputThatIsNotADocumentChangesNothing)
{
    for (const std::string& bytes : kRefused) {
        EXPECT_FALSE(Parse(bytes)) << bytes;
        EXPECT_EQ(Take(), Lines{Refusal(bytes)}) << bytes;
    }
    EXPECT_EQ(Changes(Policy()), Lines());
}

TEST_F(ConstantsInput, InputThatIsNotADocumentChangesNothing)
{
    OpenConstants::m_DataCache = {{"before", "stays"}};
    for (const std::string& bytes : kRefused) {
        EXPECT_FALSE(Parse(bytes)) << bytes;
        EXPECT_EQ(Take(), Lines{Refusal(bytes)}) << bytes;
    }
    EXPECT_EQ(OpenConstants::m_DataCache, (Cache{{"before", "stays"}}));
}

TEST_F(ScheduleInput, OneOrTwoBytesAreNoDocument)
{
    const Lines documents = ShortestDocuments();
    for (const std::string& document : documents) {
        EXPECT_FALSE(Parse(document)) << document;
    }
    EXPECT_EQ(Take(), Refusals(documents));
    EXPECT_EQ(Changes(Policy()), Lines());
}

TEST_F(ConstantsInput, OneOrTwoBytesAreNoDocument)
{
    const Lines documents = ShortestDocuments();
    for (const std::string& document : documents) {
        EXPECT_FALSE(Parse(document)) << document;
    }
    EXPECT_EQ(Take(), Refusals(documents));
    EXPECT_EQ(OpenConstants::m_DataCache, Cache());
}

// A byte that is wrong where it stands ends the document there; what precedes it stays.
TEST_F(ScheduleInput, AnyByteInAnyPlaceIsReadOrRefused)
{
    const std::string good = ScheduleOf("e");
    for (std::size_t at = 0; at < good.size(); ++at) {
        for (const int byte : {0x00, 0x01, 0x26, 0x27, 0x3C, 0x3E, 0x5D, 0x7F, 0x80, 0xC3, 0xE9, 0xFF}) {
            std::string document = good;
            document[at] = static_cast<char>(byte);
            container = CVQMScheduleContainer();
            const bool read = Parse(document);
            const Lines lines = Take();
            EXPECT_EQ(read, lines.back() != Refusal(document)) << document;
            const Lines changes = Changes(Policy());
            EXPECT_LE(changes.size(), 4U) << document;
            if (byte == 0 || byte == 1 || byte >= 0x80) {
                EXPECT_FALSE(read) << document;
            }
        }
    }
}

TEST_F(ScheduleInput, DefaultValuesOfADocumentTypeCount)
{
    EXPECT_TRUE(Parse("<!DOCTYPE rsp [<!ATTLIST item order CDATA '7'><!ATTLIST rsp state CDATA 'ok'>]>"
                      "<rsp><schedule><item/><item order='8'/></schedule></rsp>"));
    EXPECT_EQ(Changes(Policy()),
              (Lines{"bError=0", "schedule 0-0-0 0:0:0 0 to 0-0-0 0:0:0 0", "item ||0||7", "item ||0||8"}));
}

TEST_F(ConstantsInput, DefaultValuesOfADocumentTypeCount)
{
    EXPECT_TRUE(Parse("<!DOCTYPE c [<!ATTLIST Data value CDATA 'v'>]><c><Data key='a'/><Data key='b' value='w'/></c>"));
    EXPECT_EQ(OpenConstants::m_DataCache, (Cache{{"a", "v"}, {"b", "w"}}));
}

TEST_F(ScheduleInput, WhatLiesElsewhereIsNeverRead)
{
    EXPECT_TRUE(Parse("<!DOCTYPE rsp [<!ENTITY e SYSTEM 'file:///proc/self/comm'>]>"
                      "<schedule><item><name>a&e;b</name><size>12&e;</size></item></schedule>"));
    EXPECT_EQ(LastChange(), "item |ab|12||0");
    // From a parameter entity on the rest of a document type is not known either.
    EXPECT_TRUE(Parse("<!DOCTYPE rsp [<!ENTITY % p '<!ENTITY e \"x\">'>%p;<!ENTITY f 'y'>]>"
                      "<schedule><item><name>a&e;&f;b</name></item></schedule>"));
    EXPECT_EQ(LastChange(), "item |ab|0||0");
}

TEST_F(ConstantsInput, WhatLiesElsewhereIsNeverRead)
{
    EXPECT_TRUE(Parse("<!DOCTYPE c SYSTEM 'file:///proc/self/comm' [<!ENTITY % p SYSTEM 'file:///proc/self/comm'>%p;]>"
                      "<c>&unknown;<Data key='a' value='1'/></c>"));
    EXPECT_EQ(OpenConstants::m_DataCache, (Cache{{"a", "1"}}));
}
