#include <climits>
#include <cstdint>
#include <thread>
#include <vector>

#include <expat.h>
#include <sys/mman.h>
#include <unistd.h>

#include "Tests/VQMSerialize/XMLSerializeTest.h"

using parser_fault::BlocksInUse;
using parser_fault::faults;
using recorder::Lines;
using recorder::Take;
using testing::Each;
using testing::ElementsAre;
using testing::StartsWith;

TEST_F(XMLSerialize, EmptyElementStartsAndEndsWithoutText)
{
    EXPECT_TRUE(Parse("<a x='1'/>"));
    EXPECT_THAT(Take(),
                ElementsAre("XML_GetBuffer 10", "step 0 name a attributes x 1", "step 1 name a", "Destroy", kEnd));
}

TEST_F(XMLSerialize, TextComesInPiecesAndUntrimmed)
{
    EXPECT_TRUE(Parse("<a> x&amp;y\n<b/></a>"));
    EXPECT_THAT(Take(), ElementsAre("XML_GetBuffer 20", "step 0 name a attributes", "step 2 text  x", "step 2 text &",
                                    "step 2 text y", "step 2 text \n", "step 0 name b attributes", "step 1 name b",
                                    "step 1 name a", "Destroy", kEnd));
}

TEST_F(XMLSerialize, PiecesJoinToTheText)
{
    const struct {
        const char* content;
        const char* text;
    } cases[] = {
        {"x&amp;y", "x&y"},
        {"&lt;&gt;&apos;&quot;", "<>'\""},
        {"&#65;&#x42;c", "ABc"},
        {"1\r\n2\r3\n4", "1\n2\n3\n4"},
        {"<![CDATA[<b> & ]]>c", "<b> & c"},
        {"a<!-- no text -->b<?nor this?>c", "abc"},
        {"\t \n", "\t \n"},
        {"100%s", "100%s"},
        {"", ""},
    };
    for (const auto& expected : cases) {
        target.text.clear();
        EXPECT_TRUE(Parse("<a>" + std::string(expected.content) + "</a>"));
        EXPECT_EQ(target.text, expected.text) << expected.content;
        Lines lines = Take();
        ASSERT_GE(lines.size(), 5U);
        EXPECT_EQ(lines[1], "step 0 name a attributes");
        // During a text there is neither a name nor an attribute.
        EXPECT_THAT(Lines(lines.begin() + 2, lines.end() - 3), Each(StartsWith("step 2 text ")));
        EXPECT_EQ(lines[lines.size() - 3], "step 1 name a");
    }
}

TEST_F(XMLSerialize, ALongTextIsDeliveredCompletely)
{
    const std::string text((std::size_t{1} << 20U) + 1, 'x');
    EXPECT_TRUE(Parse("<a>" + text + "</a>"));
    EXPECT_EQ(target.text.size(), text.size());
    EXPECT_TRUE(target.text == text);
    Take();
    EXPECT_TRUE(Parse("<a b='" + text + "'/>"));
    EXPECT_TRUE(Take()[1] == "step 0 name a attributes b " + text);
}

TEST_F(XMLSerialize, EventsBeforeAnErrorStayDelivered)
{
    const struct {
        const char* document;
        Lines steps;
    } cases[] = {
        {"", {}},
        {" \n", {}},
        {"text", {}},
        {"<", {}},
        {"<a", {}},
        {"<a>", {"step 0 name a attributes"}},
        {"<a></b>", {"step 0 name a attributes"}},
        {"<a/><b/>", {"step 0 name a attributes", "step 1 name a"}},
        {"<a/>text", {"step 0 name a attributes", "step 1 name a"}},
        {"<a>x&unknown;</a>", {"step 0 name a attributes", "step 2 text x"}},
        {"<a><b x='1' x='2'/></a>", {"step 0 name a attributes"}}, // repeated attributes never come
        {"<a>x\x01</a>", {"step 0 name a attributes", "step 2 text x"}},
        {" <?xml version='1.0'?><a/>", {}},
    };
    for (const auto& expected : cases) {
        EXPECT_FALSE(Parse(expected.document)) << expected.document;
        Lines lines = {"XML_GetBuffer " + std::to_string(std::string(expected.document).size())};
        lines.insert(lines.end(), expected.steps.begin(), expected.steps.end());
        lines.push_back(Line("Deserialize", RefusalMessage(expected.document)));
        lines.emplace_back("Destroy");
        EXPECT_EQ(Take(), lines) << expected.document;
    }
}

TEST_F(XMLSerialize, EncodingIsTheDeclaredOneElseUtf8)
{
    const struct {
        const char* what;
        std::string document;
        bool result;
        const char* text;
    } cases[] = {
        {"UTF-8", "<a>\xc3\xa9</a>", true, "\xc3\xa9"},
        {"UTF-8 with its mark", "\xef\xbb\xbf<a>\xc3\xa9</a>", true, "\xc3\xa9"},
        {"UTF-8 declared", "<?xml version='1.0' encoding='utf-8'?><a>\xc3\xa9</a>", true, "\xc3\xa9"},
        {"broken UTF-8", "<a>\xc3</a>", false, ""},
        {"Latin-1 declared", "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xe9</a>", true, "\xc3\xa9"},
        {"Latin-1 undeclared", "<a>\xe9</a>", false, ""},
        {"ASCII declared", "<?xml version='1.0' encoding='US-ASCII'?><a>e</a>", true, "e"},
        {"an encoding that the parser does not know", "<?xml version='1.0' encoding='KOI8-R'?><a>e</a>", false, ""},
        {"UTF-16 declared, which it is not", "<?xml version='1.0' encoding='UTF-16'?><a>e</a>", false, ""},
    };
    for (const auto& expected : cases) {
        target.text.clear();
        EXPECT_EQ(Parse(expected.document), expected.result) << expected.what;
        EXPECT_EQ(target.text, expected.text) << expected.what;
    }
}

TEST_F(XMLSerialize, ADocumentEndsAtItsFirstNul)
{
    EXPECT_TRUE(Parse(std::string("<a/>\0<b", 7)));
    EXPECT_THAT(Take(), ElementsAre("XML_GetBuffer 4", "step 0 name a attributes", "step 1 name a", "Destroy", kEnd));
    // And so a document in UTF-16 ends in its first tag.
    EXPECT_FALSE(Parse(std::string("\xff\xfe<\0a\0/\0>\0", 10)));
    EXPECT_THAT(Take(), ElementsAre("XML_GetBuffer 3", kParseError, "Destroy"));
    EXPECT_FALSE(Parse(std::string("\xfe\xff\0<\0a\0/\0>", 10)));
    EXPECT_THAT(Take(), ElementsAre("XML_GetBuffer 2", kParseError, "Destroy"));
}

// The callbacks serve any parser; what they make of a document does not depend on where it is cut.
TEST_F(XMLSerialize, EverySplitOfADocumentGivesTheSame)
{
    const std::string document = "\xef\xbb\xbf<a x='1&amp;2' y=''>t\xc3\xa9xt&#65;\r\n<b/><![CDATA[<]]></a>";
    EXPECT_TRUE(Parse(document));
    const std::string text = target.text;
    const auto withoutText = [](const Lines& lines) {
        Lines rest;
        for (const std::string& line : lines) {
            if (line.rfind("step 0", 0) == 0 || line.rfind("step 1", 0) == 0) {
                rest.push_back(line);
            }
        }
        return rest;
    };
    const Lines whole = withoutText(Take());
    ASSERT_EQ(whole.size(), 4U);
    for (std::size_t split = 0; split <= document.size(); ++split) {
        target.text.clear();
        const XML_Parser parser = XML_ParserCreate(nullptr);
        XML_SetUserData(parser, &serializer);
        XML_SetElementHandler(parser, CVQMXMLSerialize::OnStartElement, CVQMXMLSerialize::OnEndElement);
        XML_SetCharacterDataHandler(parser, CVQMXMLSerialize::OnElementData);
        const int left = static_cast<int>(split);
        const int right = static_cast<int>(document.size() - split);
        EXPECT_EQ(XML_Parse(parser, document.data(), left, XML_FALSE), XML_STATUS_OK) << split;
        EXPECT_EQ(XML_Parse(parser, document.data() + split, right, XML_TRUE), XML_STATUS_OK) << split;
        XML_ParserFree(parser);
        EXPECT_EQ(withoutText(Take()), whole) << split;
        EXPECT_EQ(target.text, text) << split;
    }
    EXPECT_EQ(BlocksInUse(), 0U);
}

// On a 32-bit machine no text is that long. The thread sanitizer would keep books of each byte.
#if SIZE_MAX > UINT32_MAX && !defined(__SANITIZE_THREAD__)

namespace {

/// A text of a little over 4 GiB that takes 16 MiB of memory: the same pages, over and
/// over, and a page with the NUL behind them.
class LongText {
public:
    LongText()
    {
        file_ = memfd_create("text", 0);
        const std::string blanks(kChunk, ' ');
        EXPECT_EQ(write(file_, blanks.data(), kChunk), static_cast<ssize_t>(kChunk));
        begin_ = static_cast<char*>(
            mmap(nullptr, kLength + kPage, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0));
        EXPECT_NE(begin_, MAP_FAILED);
        for (std::size_t offset = 0; offset < kLength; offset += kChunk) {
            EXPECT_NE(mmap(begin_ + offset, kChunk, PROT_READ, MAP_SHARED | MAP_FIXED, file_, 0), MAP_FAILED);
        }
    }

    ~LongText()
    {
        munmap(begin_, kLength + kPage);
        close(file_);
    }

    LongText(const LongText&) = delete;
    LongText& operator=(const LongText&) = delete;

    /// The text's last `length` bytes.
    const char* OfLength(std::size_t length) const { return begin_ + kLength - length; }

private:
    static constexpr std::size_t kPage = 65536;
    static constexpr std::size_t kChunk = std::size_t{16} << 20U;
    static constexpr std::size_t kLength = (std::size_t{1} << 32U) + kChunk;

    int file_ = -1;
    char* begin_ = nullptr;
};

} // namespace

TEST_F(XMLSerialize, ADocumentTooLongForTheParserFails)
{
    const LongText text;
    faults().refuseBuffer = true; // the longest length is asked for, but not filled
    ASSERT_TRUE(serializer.Create());
    EXPECT_FALSE(serializer.Deserialize(text.OfLength(INT_MAX), &target));
    EXPECT_THAT(Take(), ElementsAre("XML_GetBuffer 2147483647", kNoBuffer, "Destroy"));

    faults().refuseBuffer = false;
    for (const std::size_t length : {std::size_t{INT_MAX} + 1, (std::size_t{1} << 32U) + 4}) {
        ASSERT_TRUE(serializer.Create());
        EXPECT_FALSE(serializer.Deserialize(text.OfLength(length), &target)) << length;
        EXPECT_THAT(Take(), ElementsAre(kNoBuffer, "Destroy")) << length;
        ExpectNoParser();
    }
    EXPECT_EQ(serializer.m_pTarget, nullptr);
}

#endif

TEST_F(XMLSerialize, SerializersOnSeveralThreadsDoNotMix)
{
    constexpr int kThreads = 4;
    std::vector<StepTarget> targets(kThreads);
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&targets, i] {
            const std::string document = "<a>" + std::to_string(i) + "</a>";
            for (int round = 0; round < 50; ++round) {
                CVQMXMLSerialize own;
                EXPECT_TRUE(own.Create());
                EXPECT_TRUE(own.Deserialize(document.c_str(), &targets[static_cast<std::size_t>(i)]));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (int i = 0; i < kThreads; ++i) {
        EXPECT_EQ(targets[static_cast<std::size_t>(i)].text, std::string(50, static_cast<char>('0' + i)));
    }
    EXPECT_EQ(BlocksInUse(), 0U);
}
