#include "Data/VQMScheduleContainer.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "Tests/Platform/Recorder.h"
#include "VQMSerialize/VQMXMLSerialize.h"

using recorder::Lines;
using recorder::Take;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace {

static_assert(offsetof(_VQMTime, nYear) == 0 && offsetof(_VQMTime, nSpare) == 24 && sizeof(_VQMTime) == 28);
static_assert(offsetof(_VQMContentInfo, strID) < offsetof(_VQMContentInfo, strName));
static_assert(offsetof(_VQMContentInfo, strName) < offsetof(_VQMContentInfo, nSize));
static_assert(offsetof(_VQMContentInfo, nSize) < offsetof(_VQMContentInfo, strFormat));
static_assert(offsetof(_VQMContentInfo, strFormat) < offsetof(_VQMContentInfo, nOrder));

const recorder::LogOf kLog{nullptr, "VQMScheduleContainer.cpp"};
const std::string kMissing = "pAttribute or pValue is wrong";

using Attributes = std::vector<const char*>;
using Time = std::array<int, 7>;

Time Fields(const _VQMTime& time)
{
    return {time.nYear, time.nMonth, time.nDay, time.nHour, time.nMinute, time.nSecond, time.nSpare};
}

class ScheduleContainer : public testing::Test {
protected:
    ScheduleContainer() { Take(); }

    void Start(const char* name, Attributes attributes = {})
    {
        attributes.push_back(nullptr);
        attributes.shrink_to_fit(); // a read past the end is one past the memory
        container.OnStartElement(name, attributes.data());
    }

    _VQMPolicy Policy()
    {
        _VQMPolicy policy;
        container.GetSturcture(&policy);
        return policy;
    }

    bool Parse(const char* document)
    {
        CVQMXMLSerialize serializer;
        return serializer.Create() && serializer.Deserialize(document, &container);
    }

    CVQMScheduleContainer container;
};

Lines InFunction(const std::string& function, const std::vector<std::string>& messages)
{
    Lines lines;
    for (const std::string& message : messages) {
        lines.push_back(kLog.Debug(function, message));
    }
    return lines;
}

} // namespace

TEST_F(ScheduleContainer, WholeDocumentGivesItsPolicy)
{
    ASSERT_TRUE(
        Parse("<rsp state='ok'><policy period='30'/>"
              "<project id='1001' version='1.2' item_count='2' total_size='3145728' expiration='2016-12-31'/>"
              "<schedule start_time='09:00:00' end_time='18:30:00'>"
              "<item id='A1' order='1'><name>intro</name><size>1048576</size><format>mp4</format></item>"
              "<item id='A2' order='2'><name>a&amp;b</name><size>2097152</size><format>jpg</format></item></schedule>"
              "<schedule start_time='09:00:00' end_time='18:30:00'/>"
              "<rech_info IsMaster='1' NumOfPlayer='2' IPAddrOfMaster='192.168.0.10' IPType='3' IPAddr='192.168.0.11' "
              "SubnetMask='255.255.255.0' Gateway='192.168.0.1' TypeOfNetwork='4' WirelessGroupName='group1' "
              "nImageDuration='10'/></rsp>"));
    const _VQMPolicy policy = Policy();
    EXPECT_FALSE(policy.bError);
    EXPECT_EQ(policy.nCheckPeriod, 30);
    EXPECT_EQ(policy.nProjectID, 1001U);
    EXPECT_EQ(policy.strVersion, "1.2");
    EXPECT_EQ(policy.nItemCount, 2);
    EXPECT_EQ(policy.nTotalSize, 3145728U);
    EXPECT_EQ(Fields(policy.stExpiration), (Time{2016, 12, 31, 0, 0, 0, 0}));
    ASSERT_EQ(policy.listSchedule.size(), 2U);
    const _VQMSchdule& schedule = policy.listSchedule.front();
    EXPECT_EQ(Fields(schedule.stStartTime), (Time{0, 0, 0, 9, 0, 0, 0}));
    EXPECT_EQ(Fields(schedule.stEndTime), (Time{0, 0, 0, 18, 30, 0, 0}));
    ASSERT_EQ(schedule.listContents.size(), 2U);
    EXPECT_EQ(schedule.listContents.front().strID, "A1");
    EXPECT_EQ(schedule.listContents.front().strName, "intro.mp4");
    EXPECT_EQ(schedule.listContents.front().nSize, 1048576U);
    EXPECT_EQ(schedule.listContents.front().strFormat, "mp4");
    EXPECT_EQ(schedule.listContents.front().nOrder, 1);
    EXPECT_EQ(schedule.listContents.back().strName, "a&b.jpg");
    EXPECT_TRUE(policy.listSchedule.back().listContents.empty());
    EXPECT_TRUE(policy.IsMaster);
    EXPECT_EQ(policy.NumOfPlayer, 2);
    EXPECT_EQ(policy.IPAddrOfMaster, "192.168.0.10");
    EXPECT_EQ(policy.IPType, 3);
    EXPECT_EQ(policy.IPAddr, "192.168.0.11");
    EXPECT_EQ(policy.SubnetMask, "255.255.255.0");
    EXPECT_EQ(policy.Gateway, "192.168.0.1");
    EXPECT_EQ(policy.TypeOfNetwork, 4);
    EXPECT_EQ(policy.WirelessGroupName, "group1");
    EXPECT_EQ(policy.nImageDuration, 10);
}

TEST_F(ScheduleContainer, PolicyLogsItsMissingSlots)
{
    Start("policy", {"period", "30"});
    EXPECT_THAT(Take(), ElementsAreArray(InFunction("ParsePolicyAttribute", {"Policy: Check Period is 30 minutes \n",
                                                                             kMissing, kMissing, kMissing, kMissing})));
}

TEST_F(ScheduleContainer, RepeatedUnknownAndSurplusAttributes)
{
    Start("project",
          {"id", "1", "id", "2", "Version", "x", "version", nullptr, "expiration", "20161231", "version", "9"});
    Lines expected = InFunction("ParseProjectAttribute",
                                {"Project - id 1\n", "Project - id 2\n", "Project: Unknown Attributes\n", kMissing});
    expected.push_back(kLog.Debug("ConvertYYYYMMDDDateToVQMTime", " Wrong date size 8\n"));
    expected.push_back(kLog.Debug("ParseProjectAttribute", "Project - Expiration 0-0-0 \n"));
    EXPECT_THAT(Take(), ElementsAreArray(expected));
    EXPECT_EQ(Policy().nProjectID, 2U);
    EXPECT_EQ(Policy().strVersion, "");
}

TEST_F(ScheduleContainer, RechInfoLogsTheGroupAsGateway)
{
    Start("rech_info", {"IsMaster", "2", "WirelessGroupName", "50% off", "NumOfPlayer", "-3"});
    EXPECT_THAT(Take(), ElementsAreArray(InFunction("ParseRECHInfoElements",
                                                    {"rech_info - IsMaster 2\n", "rech_info - Gateway 50% off\n",
                                                     "rech_info - NumOfPlayer -3\n", kMissing, kMissing, kMissing,
                                                     kMissing, kMissing, kMissing, kMissing})));
    EXPECT_FALSE(Policy().IsMaster);
    EXPECT_EQ(Policy().Gateway, "");
}

TEST_F(ScheduleContainer, IsMasterIsTheNumberOne)
{
    for (const char* text : {"1", "01", "1x"}) {
        Start("rech_info", {"IsMaster", text});
        EXPECT_TRUE(Policy().IsMaster) << text;
    }
    for (const char* text : {"2", "-1", "true", ""}) {
        Start("rech_info", {"IsMaster", text});
        EXPECT_FALSE(Policy().IsMaster) << text;
    }
}

TEST_F(ScheduleContainer, OnlyTheFirstAttributeOfRspCounts)
{
    EXPECT_TRUE(Policy().bError);
    Start("rsp", {"x", "y", "state", "ok"});
    EXPECT_TRUE(Policy().bError);
    Start("rsp", {"state", "OK"});
    EXPECT_TRUE(Policy().bError);
    Start("rsp", {"state", "ok"});
    EXPECT_FALSE(Policy().bError);
    Start("rsp", {"state", "failed"});
    EXPECT_FALSE(Policy().bError);
    Start("rsp");
    EXPECT_TRUE(Policy().bError);
    EXPECT_THAT(Take(), IsEmpty());
}

TEST_F(ScheduleContainer, ItemsTextsAndTheirLines)
{
    Start("item", {"id", "A", "order", "2"});
    Start("name");
    container.OnElementData("cl");
    container.OnElementData("ip");
    container.OnEndElement("size"); // not the one that is open
    container.OnEndElement("name");
    container.OnEndElement("name");
    Start("size");
    container.OnElementData("34");
    container.OnElementData("12MB");
    container.OnEndElement("size");
    Start("format");
    container.OnEndElement("format");
    container.OnElementData("\n");
    container.OnEndElement("item");
    Start("Item");
    container.OnEndElement("schedule");
    EXPECT_THAT(Take(), ElementsAre(kLog.Debug("ParseItemElements", "item - id A \n"),
                                    kLog.Debug("ParseItemElements", "item - order 2 \n"),
                                    kLog.Debug("OnEndElement", "OnEndElement - Unknown element"),
                                    kLog.Debug("OnEndElement", "OnEndElement - name closes \n"),
                                    kLog.Debug("OnEndElement", "OnEndElement - Unknown element"),
                                    kLog.Debug("OnEndElement", "OnEndElement - size closes \n"),
                                    kLog.Debug("OnEndElement", "OnEndElement - format closes (clip.) \n"),
                                    kLog.Debug("OnElementData", "OnElementData - Unknown Element \n"),
                                    kLog.Debug("OnStartElement", "OnStartElement - Unknown Element\n")));
    const _VQMContentInfo content = Policy().listSchedule.front().listContents.front();
    EXPECT_EQ(content.strName, "clip.");
    EXPECT_EQ(content.nSize, 12U);
    container.OnEndElement("item"); // nothing of the last one is left
    container.OnEndElement("schedule");
    EXPECT_EQ(Policy().listSchedule.back().listContents.front().strID, "");
    EXPECT_EQ(Policy().listSchedule.back().listContents.front().nSize, 0U);
    EXPECT_EQ(Policy().listSchedule.back().listContents.front().nOrder, 0);
}

TEST_F(ScheduleContainer, Times)
{
    const struct {
        const char* text;
        int hour, minute, second;
        Lines messages;
    } cases[] = {
        {"09:00:00", 9, 0, 0, {}},
        {"23:59:59", 23, 59, 59, {}},
        {"24:00:00", 24, 0, 0, {}},
        {"09:30", 9, 3, 0, {"second separator can't be found\n"}},
        {"09:30:", 9, 30, 0, {}},
        {"9:5", 0, 0, 0, {"No more data after parsing hour\n"}},
        {":30:00", 0, 0, 0, {"Cannot find first separator :30:00\n"}},
        {"0930", 0, 0, 0, {"Cannot find first separator 0930\n"}},
        {"", 0, 0, 0, {"Cannot find first separator \n"}},
        {"25:00:00", 0, 0, 0, {"hour wrong data\n"}},
        {"99999999999999999999:00:00", 0, 0, 0, {"hour wrong data\n"}},
        {"09:60:00", 0, 0, 0, {"minute wrong data\n"}},
        {"09::00", 0, 0, 0, {"Minute Has not number data 09::00\n"}},
        {"09:30:60", 9, 30, 0, {"Seconds wrong data\n"}},
        {"09:30:1x", 9, 30, 0, {"Seconds Has not number data 09:30:1x\n"}},
        {"09:30:15:00", 9, 30, 0, {"Seconds Has not number data 09:30:15:00\n"}},
        {"+9:30:00", 0, 0, 0, {"Hour Has not number data +9:30:00\n"}},
    };
    for (const auto& expected : cases) {
        _VQMTime time{1, 2, 3, 4, 5, 6, 7};
        container.ConvertHHMMSSTimeToVQMTime(expected.text, time);
        EXPECT_EQ(Fields(time), (Time{0, 0, 0, expected.hour, expected.minute, expected.second, 0})) << expected.text;
        EXPECT_THAT(Take(), ElementsAreArray(InFunction("ConvertHHMMSSTimeToVQMTime", expected.messages)));
    }
}

TEST_F(ScheduleContainer, Dates)
{
    const struct {
        const char* text;
        int year, month, day;
    } cases[] = {{"2016-12-31", 2016, 12, 31},       {"2016/12/31", 2016, 12, 31}, {"2016123100", 2016, 23, 0},
                 {"2016-12-31T10:00", 2016, 12, 31}, {"x016-99-1x", 0, 99, 1},     {"20161231", 0, 0, 0}};
    for (const auto& expected : cases) {
        _VQMTime time{1, 2, 3, 4, 5, 6, 7};
        container.ConvertYYYYMMDDDateToVQMTime(expected.text, time);
        EXPECT_EQ(Fields(time), (Time{expected.year, expected.month, expected.day, 0, 0, 0, 0})) << expected.text;
    }
    EXPECT_THAT(Take(), ElementsAre(kLog.Debug("ConvertYYYYMMDDDateToVQMTime", " Wrong date size 8\n")));
}

TEST_F(ScheduleContainer, NullPointersAreLogged)
{
    _VQMPolicy policy;
    container.GetSturcture(nullptr);
    container.SetStructure(nullptr);
    container.CopyPolicyMember(nullptr, &policy);
    container.CopyPolicyMember(&policy, nullptr);
    EXPECT_FALSE(container.ReadFrom(nullptr));
    EXPECT_FALSE(container.WriteTo(nullptr));
    const std::string copy = "CVQMScheduleContainer::CopyPolicyMember - Error pSource or pDest is Null \n";
    EXPECT_THAT(
        Take(),
        ElementsAre(kLog.Debug("GetSturcture", "CVQMScheduleContainer::GetSturcture - Error structure pointer null\n"),
                    kLog.Debug("SetStructure", "CVQMScheduleContainer::SetStructure - Error structure pointer null\n"),
                    kLog.Debug("CopyPolicyMember", copy), kLog.Debug("CopyPolicyMember", copy),
                    kLog.Debug("ReadFrom", "CVQMScheduleContainer::ReadFrom - pSerialize is null\n")));
}

TEST_F(ScheduleContainer, SecondDocumentAddsItsSchedules)
{
    ASSERT_TRUE(Parse("<rsp state='ok'><policy period='5'/><schedule/><item id='waits'/></rsp>"));
    ASSERT_TRUE(Parse("<rsp state='ok'><schedule/></rsp>"));
    _VQMPolicy target;
    target.listSchedule.resize(7);
    container.GetSturcture(&target);
    EXPECT_EQ(target.nCheckPeriod, 5);
    ASSERT_EQ(target.listSchedule.size(), 2U);
    EXPECT_EQ(target.listSchedule.back().listContents.front().strID, "waits");
}

TEST(SchedulePolicy, FieldsLieInTheirOrder)
{
    const _VQMPolicy policy;
    const std::vector<const void*> fields = {&policy.bError,        &policy.nCheckPeriod,      &policy.nProjectID,
                                             &policy.strVersion,    &policy.nItemCount,        &policy.nTotalSize,
                                             &policy.stExpiration,  &policy.listSchedule,      &policy.IsMaster,
                                             &policy.NumOfPlayer,   &policy.IPAddrOfMaster,    &policy.IPType,
                                             &policy.IPAddr,        &policy.SubnetMask,        &policy.Gateway,
                                             &policy.TypeOfNetwork, &policy.WirelessGroupName, &policy.nImageDuration};
    EXPECT_TRUE(std::is_sorted(fields.begin(), fields.end()));
}
