#include <string>
#include <vector>

#include <dlog.h>
#include <gtest/gtest.h>

#include "Data/VQMDataConstants.h"
#include "Data/VQMScheduleContainer.h"
#include "Tests/Data/OpenConstants.h"
#include "Tests/Support/AllocationFault.h"
#include "Tests/VQMSerialize/ParserFault.h"
#include "VQMSerialize/VQMXMLSerialize.h"

// Documents that are large, deep, wide, or made to become large, and what memory they take.

namespace {
std::size_t logLines = 0;
} // namespace

/// A record of millions of lines would be most of the memory.
int dlog_print(log_priority /*prio*/, const char* /*tag*/, const char* /*fmt*/, ...)
{
    ++logLines;
    return 0;
}

namespace {

constexpr std::size_t kMegabyte = 1000000;
/// 100 where it takes seconds; sanitizers and emulators get less.
constexpr std::size_t kSize = VQM_TEST_MEGABYTES * kMegabyte;
/// What no document needs beside its own size.
constexpr std::size_t kSmall = kMegabyte;

std::string Repeated(const std::string& text, std::size_t count)
{
    std::string result;
    result.reserve(text.size() * count);
    for (std::size_t i = 0; i < count; ++i) {
        result += text;
    }
    return result;
}

class LargeDocument : public testing::Test {
protected:
    LargeDocument()
    {
        OpenConstants::m_DataCache.clear();
        logLines = 0;
    }
    ~LargeDocument() override
    {
        OpenConstants::m_DataCache.clear();
        EXPECT_EQ(parser_fault::BlocksInUse(), 0U);
    }

    /// Parses, and keeps what the product and its parser took at most beside what was there.
    bool Parse(const std::string& document, CVQMDataSerializableObject& target)
    {
        const std::size_t before = allocation_fault::BytesInUse();
        allocation_fault::ForgetMost();
        parser_fault::ForgetMost();
        CVQMXMLSerialize serializer;
        const bool result = serializer.Create() && serializer.Deserialize(document.c_str(), &target);
        memory = allocation_fault::MostBytes() - before + parser_fault::MostBytes();
        return result;
    }

    bool ParseSchedule(const std::string& document) { return Parse(document, container); }

    bool ParseConstants(const std::string& document)
    {
        CVQMDataConstants constants;
        return Parse(document, constants);
    }

    _VQMPolicy Policy()
    {
        _VQMPolicy policy;
        container.GetSturcture(&policy);
        return policy;
    }

    /// An empty one where there is none.
    _VQMContentInfo FirstItem()
    {
        const _VQMPolicy policy = Policy();
        if (policy.listSchedule.empty() || policy.listSchedule.front().listContents.empty()) {
            return {};
        }
        return policy.listSchedule.front().listContents.front();
    }

    CVQMScheduleContainer container;
    std::size_t memory = 0;
};

} // namespace

TEST_F(LargeDocument, OneLongTextComesWhole)
{
    const std::string begin = "<schedule><item><name>";
    const std::string document = begin + std::string(kSize - 100, 'x') + "</name></item></schedule>";
    EXPECT_TRUE(ParseSchedule(document));
    EXPECT_LT(memory, 7 * kSize + kSmall);
    const std::string name = FirstItem().strName;
    EXPECT_EQ(name.size(), kSize - 100);
    EXPECT_EQ(document.compare(begin.size(), name.size(), name), 0);
}

TEST_F(LargeDocument, OneLongTextThatIsNotWantedIsNotKept)
{
    const std::string text(kSize / 4, 'x');
    EXPECT_TRUE(ParseSchedule("<rsp>" + text + "</rsp>"));
    EXPECT_LT(memory, 4 * text.size() + kSmall);
    EXPECT_TRUE(ParseConstants("<c>" + text + "</c>"));
    EXPECT_LT(memory, 4 * text.size() + kSmall);
    EXPECT_TRUE(OpenConstants::m_DataCache.empty());
}

TEST_F(LargeDocument, ManyItemsAreAllKept)
{
    const std::string item =
        "<item id='A1' order='7'><name>clip</name><size>1048576</size><format>mp4</format></item>\n";
    const std::size_t count = kSize / item.size();
    EXPECT_TRUE(ParseSchedule("<rsp state='ok'><schedule>" + Repeated(item, count) + "</schedule></rsp>"));
    // The parser's copy and a record for each item.
    EXPECT_LT(memory, 2 * kSize + count * 192 + kSmall);
    EXPECT_EQ(logLines, count * 6 + 3);
    const _VQMPolicy policy = Policy();
    ASSERT_EQ(policy.listSchedule.size(), 1U);
    ASSERT_EQ(policy.listSchedule.front().listContents.size(), count);
    for (const _VQMContentInfo& content : policy.listSchedule.front().listContents) {
        ASSERT_TRUE(content.strName == "clip.mp4" && content.nSize == 1048576 && content.nOrder == 7);
    }
}

TEST_F(LargeDocument, ManySchedulesAreAllKept)
{
    const std::string schedule = "<schedule start_time='09:00:00' end_time='18:30:00'><item id='A'/></schedule>\n";
    const std::size_t count = kSize / 10 / schedule.size();
    EXPECT_TRUE(ParseSchedule("<rsp>" + Repeated(schedule, count) + "</rsp>"));
    EXPECT_EQ(Policy().listSchedule.size(), count);
}

TEST_F(LargeDocument, ManyConstantsOfTheSameKeysAreKeptOnce)
{
    std::string thousand;
    for (int i = 0; i < 1000; ++i) {
        thousand += "<Data key='key" + std::to_string(i) + "' value='a value of some length'/>\n";
    }
    const std::size_t count = kSize / 4 / thousand.size();
    EXPECT_TRUE(ParseConstants("<c>" + Repeated(thousand, count) + "</c>"));
    EXPECT_LT(memory, kSize / 2 + kSmall);
    EXPECT_EQ(OpenConstants::m_DataCache.size(), 1000U);
    EXPECT_EQ(logLines, count * 2000 + 3) << "an end and a line end each";
}

// Each entity is ten of the one before; or one long entity is used over and over. The parser gives
// up once a document has become a hundred times as large as it is, and 8 MiB.
TEST_F(LargeDocument, EntitiesThatMultiplyAreStopped)
{
    std::string laughs = "<!DOCTYPE c [<!ENTITY e0 'xxxxxxxxxx'>";
    for (int i = 1; i < 12; ++i) {
        laughs += "<!ENTITY e" + std::to_string(i) + " '" + Repeated("&e" + std::to_string(i - 1) + ';', 10) + "'>";
    }
    laughs += "]>";
    const std::string quadratic = "<!DOCTYPE c [<!ENTITY e '" + std::string(20000, 'x') + "'>]>";
    const struct {
        const char* what;
        const std::string& prolog;
        std::string uses;
    } bombs[] = {
        {"exponential", laughs, "&e11;"},
        {"quadratic", quadratic, Repeated("&e;", 20000)},
    };
    constexpr std::size_t kLimit = 80 * kMegabyte;
    // Each of them is 8 MiB of single characters.
    std::vector<const char*> elements = {"name"};
    if (kSize == 100 * kMegabyte) {
        elements.insert(elements.end(), {"format", "size", "rsp"});
    }
    for (const auto& bomb : bombs) {
        for (const char* element : elements) {
            CVQMScheduleContainer own;
            EXPECT_FALSE(Parse(bomb.prolog + '<' + element + '>' + bomb.uses + "</" + element + '>', own));
            EXPECT_LT(memory, kLimit) << bomb.what << ' ' << element;
        }
        EXPECT_FALSE(ParseSchedule(bomb.prolog + "<project version='" + bomb.uses + "'/>"));
        EXPECT_LT(memory, kLimit) << bomb.what;
        EXPECT_EQ(Policy().strVersion, "") << bomb.what;
        EXPECT_FALSE(ParseConstants(bomb.prolog + "<Data key='a' value='" + bomb.uses + "'/>"));
        EXPECT_LT(memory, kLimit) << bomb.what;
        EXPECT_TRUE(OpenConstants::m_DataCache.empty()) << bomb.what;
        EXPECT_FALSE(ParseConstants(bomb.prolog + "<c>" + bomb.uses + "<Data key='a' value='b'/></c>"));
        EXPECT_LT(memory, kLimit) << bomb.what;
        EXPECT_TRUE(OpenConstants::m_DataCache.empty()) << bomb.what;
    }
}

TEST_F(LargeDocument, AChainOfEntitiesIsFollowedToItsEnd)
{
    constexpr int kLength = 20000;
    std::string prolog = "<!DOCTYPE c [<!ENTITY e0 'x'>";
    for (int i = 1; i < kLength; ++i) {
        prolog += "<!ENTITY e" + std::to_string(i) + " '&e" + std::to_string(i - 1) + ";'>";
    }
    const std::string last = "&e" + std::to_string(kLength - 1) + ';';
    EXPECT_TRUE(
        ParseSchedule(prolog + "]><schedule><item id='" + last + "'><name>" + last + "</name></item></schedule>"));
    EXPECT_EQ(FirstItem().strName, "x");
    EXPECT_EQ(FirstItem().strID, "x");
    EXPECT_TRUE(ParseConstants(prolog + "]><Data key='" + last + "' value='" + last + "'>" + last + "</Data>"));
    EXPECT_EQ(OpenConstants::m_DataCache["x"], "x");
}

TEST_F(LargeDocument, DeepNestingIsReadLikeAnyOther)
{
    constexpr std::size_t kDepth = 100000;
    for (const char* element : {"item", "schedule", "name", "rsp", "unknown"}) {
        const std::string name = element;
        const std::string open = Repeated('<' + name + '>', kDepth);
        CVQMScheduleContainer whole;
        EXPECT_TRUE(Parse(open + Repeated("</" + name + '>', kDepth), whole)) << name;
        EXPECT_LT(memory, kDepth * 600) << name;
        _VQMPolicy policy;
        whole.GetSturcture(&policy);
        EXPECT_EQ(policy.listSchedule.size(), name == "schedule" ? kDepth : 0U);
        CVQMScheduleContainer truncated;
        EXPECT_FALSE(Parse(open, truncated)) << name;
    }
    EXPECT_TRUE(ParseConstants(Repeated("<Data key='a' value='b'>", kDepth) + Repeated("</Data>", kDepth)));
    EXPECT_EQ(OpenConstants::m_DataCache.size(), 1U);
}

TEST_F(LargeDocument, OfManyAttributesTheFirstOnesCount)
{
    const std::size_t count = std::size_t{10000} * VQM_TEST_MEGABYTES;
    std::string attributes;
    for (std::size_t i = 0; i < count; ++i) {
        attributes += " a" + std::to_string(i) + "=''";
    }
    EXPECT_TRUE(ParseSchedule("<schedule><item id='first'" + attributes + "/></schedule>"));
    EXPECT_EQ(logLines, 5U) << "two of a schedule, two of an item, and the end";
    EXPECT_EQ(FirstItem().strID, "first");
    attributes.resize(attributes.find(" a1000="));
    EXPECT_TRUE(ParseConstants("<Data key='k' value='v'" + attributes + "/>"));
    EXPECT_EQ(OpenConstants::m_DataCache["k"], "v");
    OpenConstants::m_DataCache.clear();
    EXPECT_FALSE(ParseConstants("<Data key='k' value='v'" + attributes + " a0=''/>")) << "one is there twice";
    EXPECT_TRUE(OpenConstants::m_DataCache.empty());
}

TEST_F(LargeDocument, LongNamesAndValuesAreReadWhole)
{
    const std::string name(kSize / 10, 'n');
    for (const std::string& document :
         {'<' + name + "/>", '<' + name + "></" + name + '>', "<item " + name + "='1'/>", "<?" + name + "?><rsp/>",
          "<!--" + name + "--><rsp/>", "<!DOCTYPE " + name + "><rsp/>"}) {
        EXPECT_TRUE(ParseSchedule(document)) << document.substr(0, 10);
        EXPECT_LT(memory, document.size() * 9 + kSmall) << document.substr(0, 10);
        EXPECT_TRUE(ParseConstants(document)) << document.substr(0, 10);
    }
    EXPECT_FALSE(ParseSchedule('<' + name + "></" + name + "m>"));
    EXPECT_TRUE(ParseSchedule("<project version='" + name + "'/>"));
    EXPECT_EQ(Policy().strVersion.size(), name.size());
    EXPECT_TRUE(ParseConstants("<Data key='" + name + "' value='" + name + "'/>"));
    EXPECT_EQ(OpenConstants::m_DataCache[name].size(), name.size());
}
