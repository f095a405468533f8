#include "Tests/Data/ConstantsFixture.h"
#include "Tests/Data/ScheduleFixture.h"
#include "Tests/VQMSerialize/EmptyText.h"
#include "Tests/VQMSerialize/TokenDocument.h"

// A document that ends anywhere leaves what the events up to there give without a parser: the same
// records, the same log lines, and then the parser's error.

using recorder::Lines;
using recorder::Take;

namespace {

std::string SerializerLine(const std::string& message)
{
    return recorder::LogOf("Quillmere", "VQMXMLSerialize.cpp").Debug("Deserialize", message);
}

/// The lines so far and the parse's last one.
Lines WithEnding(Lines lines, const std::string& text, bool complete)
{
    lines.push_back(SerializerLine(complete ? "ParseHttpResponse End !!!!\n" : RefusalMessage(text)));
    return lines;
}

class TruncatedSchedule : public ScheduleTest {
protected:
    /// The policy, and what is still open once something closes it.
    Lines Everything()
    {
        Lines everything = Changes(Policy());
        End("format");
        End("item");
        End("schedule");
        const Lines closed = Changes(Policy());
        everything.insert(everything.end(), closed.begin(), closed.end());
        Take();
        return everything;
    }
};

class TruncatedConstants : public ConstantsTest {};

TokenDocument Schedule()
{
    TokenDocument document;
    document.Silent("\xef\xbb\xbf<?xml version='1.0' encoding='UTF-8'?>\n")
        .Silent("<!DOCTYPE rsp [<!ENTITY e 'entity'>]>\n<!-- a schedule -->\n")
        .Start("rsp", {{"state", "ok"}})
        .Reference("\n", "\n")
        .Empty("policy", {{"period", "30"}})
        .Text("  ")
        .Empty("project", {{"id", "1001"},
                           {"version", "1.2 <&> \xc3\xa9"},
                           {"item_count", "3"},
                           {"total_size", "3145728"},
                           {"expiration", "2016-12-31"}})
        .Reference("\n", "\n")
        .Start("schedule", {{"start_time", "09:00:00"}, {"end_time", "18:30:00"}})
        .Start("item", {{"id", "A1"}, {"order", "1"}})
        .Start("name")
        .Text("intro \xe2\x82\xac")
        .Reference("&amp;", "&")
        .Silent("<![CDATA[")
        .Text("<b>")
        .Silent("]]>")
        .End("name")
        .Start("size")
        .Text("1048576")
        .End("size")
        .Start("format")
        .Text("mp")
        .Reference("&#52;", "4")
        .End("format")
        .End("item")
        .Silent("<!-- between -->")
        .Start("item", {{"order", "2"}})
        .Start("size")
        .Text("98")
        .Silent("<?cut?>")
        .Text("765")
        .End("size")
        .Start("name")
        .Reference("&e;", "entity")
        .End("name")
        .End("item")
        .End("schedule")
        .Start("schedule", {{"end_time", "24:00:00"}})
        .End("schedule")
        .Start("item", {{"id", "waits"}})
        .End("item")
        .Empty("rech_info", {{"IsMaster", "1"}, {"NumOfPlayer", "2"}, {"IPAddr", "192.168.0.11"}})
        .Reference("\n", "\n")
        .End("rsp")
        .Silent("\n");
    return document;
}

TokenDocument Constants()
{
    TokenDocument document;
    document.Silent("\xef\xbb\xbf<?xml version='1.0'?>\n<!DOCTYPE c [<!ENTITY e 'entity'>]>\n<!-- constants -->\n")
        .Start("c")
        .Reference("\n", "\n")
        .Empty("Data", {{"key", "ScheduleFile"}, {"value", "schedule.xml"}})
        .Text("text \xc3\xa9")
        .Reference("&lt;", "<")
        .Start("Data", {{"key", "<&>"}, {"value", "\xf0\x9f\x8e\xac"}, {"more", "ignored"}})
        .Silent("<![CDATA[")
        .Text("<Data>")
        .Silent("]]>")
        .End("Data")
        .Start("x")
        .Empty("Data", {{"value", "without key"}})
        .Empty("Data", {{"key", "without value"}})
        .End("x")
        .Silent("<!-- between -->")
        .Empty("Data", {{"key", "ScheduleFile"}, {"value", "later.xml"}})
        .Reference("&e;", "entity")
        .End("c")
        .Silent("\n");
    return document;
}

} // namespace

TEST_F(TruncatedSchedule, LeavesWhatItsBeginningSays)
{
    const TokenDocument document = Schedule();
    const std::string whole = document.Whole();
    ASSERT_GT(whole.size(), 600U);
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        container = CVQMScheduleContainer();
        for (const DocumentEvent& event : document.EventsOf(length)) {
            Deliver(event, container);
        }
        const Lines lines = WithEnding(Take(), whole.substr(0, length), document.IsComplete(length));
        const Lines everything = Everything();

        container = CVQMScheduleContainer();
        EXPECT_EQ(Parse(whole.substr(0, length)), document.IsComplete(length)) << length;
        EXPECT_EQ(Take(), lines) << whole.substr(0, length);
        EXPECT_EQ(Everything(), everything) << whole.substr(0, length);
    }
}

TEST_F(TruncatedSchedule, HasAScheduleOnceItsEndTagIsThere)
{
    const std::string whole = Schedule().Whole();
    const std::size_t firstEnd = whole.find("</schedule>") + std::string("</schedule>").size();
    const std::size_t secondEnd = whole.find("</schedule>", firstEnd) + std::string("</schedule>").size();
    const std::size_t project = whole.find("/>", whole.find("<project")) + 2;
    for (std::size_t length = 0; length < whole.size(); ++length) {
        container = CVQMScheduleContainer();
        Parse(whole.substr(0, length));
        const _VQMPolicy policy = Policy();
        EXPECT_EQ(policy.listSchedule.size(), (length >= firstEnd ? 1U : 0U) + (length >= secondEnd ? 1U : 0U))
            << length;
        EXPECT_EQ(policy.nTotalSize, length >= project ? 3145728U : 0U) << length;
        if (!policy.listSchedule.empty()) {
            EXPECT_EQ(policy.listSchedule.front().listContents.size(), 2U) << length;
        }
    }
    container = CVQMScheduleContainer();
    EXPECT_TRUE(Parse(whole));
    EXPECT_EQ(Changes(Policy()),
              (Lines{"bError=0", "nCheckPeriod=30", "nProjectID=1001", "strVersion=1.2 <&> \xc3\xa9", "nItemCount=3",
                     "nTotalSize=3145728", "stExpiration=2016-12-31 0:0:0 0", "IsMaster=1", "NumOfPlayer=2",
                     "IPAddr=192.168.0.11", "schedule 0-0-0 9:0:0 0 to 0-0-0 18:30:0 0",
                     "item A1|intro \xe2\x82\xac&<b>.mp4|1048576|mp4|1", "item |entity|765||2",
                     "schedule 0-0-0 0:0:0 0 to 0-0-0 24:0:0 0"}));
}

TEST_F(TruncatedConstants, LeaveWhatTheirBeginningSays)
{
    const TokenDocument document = Constants();
    const std::string whole = document.Whole();
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        OpenConstants::m_DataCache = {{"before", "stays"}};
        CVQMDataConstants constants;
        for (const DocumentEvent& event : document.EventsOf(length)) {
            Deliver(event, constants);
        }
        const Lines lines = WithEnding(Take(), whole.substr(0, length), document.IsComplete(length));
        const Cache cache = OpenConstants::m_DataCache;

        OpenConstants::m_DataCache = {{"before", "stays"}};
        EXPECT_EQ(Parse(whole.substr(0, length)), document.IsComplete(length)) << length;
        EXPECT_EQ(Take(), lines) << whole.substr(0, length);
        EXPECT_EQ(OpenConstants::m_DataCache, cache) << whole.substr(0, length);
    }
    EXPECT_EQ(
        OpenConstants::m_DataCache,
        (Cache{{"", "without key"}, {"<&>", "\xf0\x9f\x8e\xac"}, {"ScheduleFile", "later.xml"}, {"before", "stays"}}));
}
