#include <algorithm>

#include "Tests/VQMSerialize/TokenDocument.h"
#include "Tests/VQMSerialize/XMLSerializeTest.h"

using recorder::Lines;
using recorder::Take;
using testing::ElementsAre;

namespace {

class XMLSerializeInput : public XMLSerialize {
protected:
    /// Expects these steps and a refusal, and nothing else.
    void ExpectRefused(const std::string& document, const Lines& steps, const std::string& what)
    {
        EXPECT_FALSE(Parse(document)) << what;
        EXPECT_EQ(Take(), Whole(document, steps, {Line("Deserialize", RefusalMessage(document)), "Destroy"})) << what;
    }

    void ExpectRead(const std::string& document, const Lines& steps, const std::string& what)
    {
        EXPECT_TRUE(Parse(document)) << what;
        EXPECT_EQ(Take(), Whole(document, steps, {"Destroy", kEnd})) << what;
    }

    static Lines Whole(const std::string& document, const Lines& steps, const Lines& ending)
    {
        Lines lines = {"XML_GetBuffer " + std::to_string(std::min(document.size(), document.find('\0')))};
        lines.insert(lines.end(), steps.begin(), steps.end());
        lines.insert(lines.end(), ending.begin(), ending.end());
        return lines;
    }
};

/// Two bytes for each character below 256.
std::string Utf16(const std::string& latin1, bool bigEndian)
{
    std::string text;
    for (const char character : latin1) {
        text += bigEndian ? std::string({'\0', character}) : std::string({character, '\0'});
    }
    return text;
}

} // namespace

TEST_F(XMLSerializeInput, OfOneByteIsNotADocument)
{
    for (int byte = 0; byte < 256; ++byte) {
        const std::string document(1, static_cast<char>(byte));
        ASSERT_TRUE(serializer.Create());
        EXPECT_FALSE(serializer.Deserialize(document.c_str(), &target)) << byte;
        EXPECT_THAT(Take(), ElementsAre(byte == 0 ? "XML_GetBuffer 0" : "XML_GetBuffer 1",
                                        Line("Deserialize", RefusalMessage(document)), "Destroy"))
            << byte;
        ExpectNoParser();
    }
}

TEST_F(XMLSerializeInput, IsRefusedWhenItIsEmpty)
{
    using parser_fault::EmptyBuffer;
    for (const auto& [answer, line] : {std::pair(EmptyBuffer::Given, kParseError), {EmptyBuffer::Null, kNoBuffer}}) {
        parser_fault::faults().emptyBuffer = answer;
        EXPECT_FALSE(Parse(""));
        EXPECT_THAT(Take(), ElementsAre("XML_GetBuffer 0", line, "Destroy"));
        EXPECT_TRUE(Parse("<a/>"));
        EXPECT_EQ(Take().front(), "XML_GetBuffer 4");
    }
}

TEST_F(XMLSerializeInput, TruncatedAnywhereDeliversTheEventsBeforeThat)
{
    TokenDocument document;
    document.Silent("\xef\xbb\xbf<?xml version='1.0' encoding='UTF-8'?>\n")
        .Silent("<!DOCTYPE a [<!ENTITY e 'entity'><!ATTLIST a k CDATA #IMPLIED>]>\n<!-- one -->")
        .Start("a", {{"x", "<'&>"}, {"y", ""}})
        .Reference("\n", "\n")
        .Text("t\xc3\xa9xt \xe2\x82\xac \xf0\x9f\x8e\xac")
        .Reference("&amp;", "&")
        .Text("more")
        .Reference("&e;", "entity")
        .Empty("b", {{"z", "1"}})
        .Silent("<!-- two -->")
        .Reference("&#x41;", "A")
        .Silent("<![CDATA[")
        .Text("<c> & d")
        .Silent("]]>")
        .Silent("<?three four?>")
        .Start("e")
        .End("e")
        .Reference("\r\n", "\n")
        .End("a")
        .Silent("\n");
    const std::string whole = document.Whole();
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        if (length > 0 && whole[length - 1] == '\r') {
            continue; // half a line end is one at a document's end
        }
        const std::string begun = whole.substr(0, length);
        for (const DocumentEvent& event : document.EventsOf(length)) {
            Deliver(event, target);
        }
        const Lines steps = Take();
        if (document.IsComplete(length)) {
            ExpectRead(begun, steps, begun);
        } else {
            ExpectRefused(begun, steps, begun);
        }
    }
}

// The text that goes in ends at its first NUL, and every '<' has one in UTF-16.
TEST_F(XMLSerializeInput, InUtf16EndsInItsFirstTag)
{
    const std::string body = "<a>x</a>";
    const std::string declaration = "<?xml version='1.0' encoding='UTF-16'?>";
    for (const std::string& text : {body, declaration + body}) {
        ExpectRefused(Utf16(text, false), {}, "little-endian");
        ExpectRefused(Utf16(text, true), {}, "big-endian");
        ExpectRefused("\xff\xfe" + Utf16(text, false), {}, "little-endian with its mark");
        ExpectRefused("\xfe\xff" + Utf16(text, true), {}, "big-endian with its mark");
    }
    ExpectRefused(declaration + body, {}, "declared but in 8 bits");
    ExpectRefused("\xef\xbb\xbf" + declaration + body, {}, "declared behind the mark of UTF-8");
    ExpectRefused("\xff\xfe\x01\x02", {}, "only a mark and characters without a NUL");
}

TEST_F(XMLSerializeInput, InLatin1EveryByteIsACharacter)
{
    for (int byte = 0xA0; byte < 0x100; ++byte) {
        const std::string character(1, static_cast<char>(byte));
        const std::string utf8 = {static_cast<char>(0xC0 | (byte >> 6)), static_cast<char>(0x80 | (byte & 0x3F))};
        const std::string content = "<a b='" + character + "'>" + character + "</a>";
        for (const char* name : {"ISO-8859-1", "iso-8859-1"}) {
            ExpectRead("<?xml version='1.0' encoding='" + std::string(name) + "'?>" + content,
                       {"step 0 name a attributes b " + utf8, "step 2 text " + utf8, "step 1 name a"}, name);
        }
        for (const char* prolog :
             {"", "<?xml version='1.0'?>", "<?xml version='1.0' encoding='UTF-8'?>",
              "<?xml version='1.0' encoding='US-ASCII'?>", "<?xml version='1.0' encoding='windows-1252'?>",
              "<?xml version='1.0' encoding='latin1'?>", "<?xml version='1.0' encoding='ISO-8859-15'?>"}) {
            ExpectRefused(prolog + content, {}, prolog);
        }
    }
}

TEST_F(XMLSerializeInput, HasAtMostOneByteOrderMarkAtItsStart)
{
    const Lines steps = {"step 0 name a attributes", "step 1 name a"};
    ExpectRead("\xef\xbb\xbf<a/>", steps, "a mark");
    ExpectRead("\xef\xbb\xbf<?xml version='1.0'?><a/>", steps, "a mark before the declaration");
    ExpectRefused("\xef\xbb\xbf", {}, "nothing but a mark");
    ExpectRefused("\xef\xbb\xbf\xef\xbb\xbf<a/>", {}, "two marks");
    ExpectRefused(" \xef\xbb\xbf<a/>", {}, "a mark behind a blank");
    ExpectRefused("\xef\xbb<a/>", {}, "half a mark");
    ExpectRead("<a>\xef\xbb\xbf</a>", {steps[0], "step 2 text \xef\xbb\xbf", steps[1]}, "text that looks like one");
}

TEST_F(XMLSerializeInput, IgnoresCommentsAndInstructions)
{
    const Lines steps = {"step 0 name a attributes", "step 2 text x", "step 2 text y", "step 1 name a"};
    for (const char* between : {"<!---->", "<!-- - <b> & -->", "<?p?>", "<?p <b> & ?>", "<![CDATA[]]>", "&none;"}) {
        ExpectRead("<!DOCTYPE a [<!ENTITY none ''>]><a>x" + std::string(between) + "y</a>", steps, between);
    }
    for (const char* before : {"<!-- c -->", "<?p?>", " \n\t\r\n", "<!DOCTYPE a>", "<!DOCTYPE b [<!ELEMENT c (d)>]>",
                               "<!DOCTYPE a SYSTEM 'nowhere.dtd'>", "<!DOCTYPE a PUBLIC 'p' 'nowhere.dtd' []>"}) {
        ExpectRead(before + std::string("<a>x<!---->y</a>"), steps, before);
    }
    for (const char* behind : {"<!-- c -->", "<?p?>", " \n\t\r\n"}) {
        ExpectRead("<a>x<!---->y</a>" + std::string(behind), steps, behind);
    }
    for (const char* broken : {"<!-- a -- b --><a/>", "<?xml?><a/>", "<?XML p?><a/>", "<![CDATA[x]]><a/>",
                               "<!DOCTYPE a><!DOCTYPE a><a/>", "<!DOCTYPE><a/>", "&amp;<a/>", "<!ENTITY e 'x'><a/>"}) {
        ExpectRefused(broken, {}, broken);
    }
}

TEST_F(XMLSerializeInput, TakesEntitiesFromItselfOnly)
{
    // What lies elsewhere is left out, never read.
    ExpectRead("<!DOCTYPE a [<!ENTITY e SYSTEM 'file:///proc/self/comm'>]><a>x&e;y</a>",
               {"step 0 name a attributes", "step 2 text x", "step 2 text y", "step 1 name a"}, "an external entity");
    ExpectRead("<!DOCTYPE a [<!ENTITY % p SYSTEM 'file:///proc/self/comm'>%p;]><a/>",
               {"step 0 name a attributes", "step 1 name a"}, "an external parameter entity");
    ExpectRead(
        "<!DOCTYPE a [<!ENTITY e '<b c=\"1\"/>t'>]><a>&e;</a>",
        {"step 0 name a attributes", "step 0 name b attributes c 1", "step 1 name b", "step 2 text t", "step 1 name a"},
        "an element in an entity");
    ExpectRead("<!DOCTYPE a [<!ATTLIST a x CDATA 'default' y CDATA '2'>]><a y='1'/>",
               {"step 0 name a attributes y 1 x default", "step 1 name a"}, "default values");
    ExpectRefused("<!DOCTYPE a [<!ENTITY e SYSTEM 'x'>]><a b='&e;'/>", {}, "an external entity in an attribute");
    ExpectRefused("<!DOCTYPE a [<!ENTITY e '&f;'><!ENTITY f '&e;'>]><a>&e;</a>", {"step 0 name a attributes"},
                  "entities that hold each other");
    ExpectRefused("<!DOCTYPE a [<!ENTITY e '<b>'>]><a>&e;</b></a>",
                  {"step 0 name a attributes", "step 0 name b attributes"}, "an element that an entity only opens");
    for (const char* reference : {"&#0;", "&#1;", "&#xD800;", "&#xFFFE;", "&#x110000;", "&#;", "&#x;", "&;", "& "}) {
        ExpectRefused("<a>" + std::string(reference) + "</a>", {"step 0 name a attributes"}, reference);
        ExpectRefused("<a b='" + std::string(reference) + "'/>", {}, reference);
    }
}
