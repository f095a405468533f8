#include <thread>

#include "Tests/Data/ScheduleFixture.h"

using recorder::Lines;
using recorder::Take;

namespace {

class ScheduleDocument : public ScheduleTest {
protected:
    static std::string SerializerLine(const std::string& message)
    {
        return recorder::LogOf("Quillmere", "VQMXMLSerialize.cpp").Debug("Deserialize", message);
    }
};

constexpr char kExample[] = R"(<rsp state='ok'>
  <policy period='30'/>
  <project id='1001' version='1.2' item_count='2' total_size='3145728' expiration='2016-12-31'/>
  <schedule start_time='09:00:00' end_time='18:30:00'>
    <item id='A1' order='1'><name>intro</name><size>1048576</size><format>mp4</format></item>
    <item id='A2' order='2'><name>logo</name><size>2097152</size><format>jpg</format></item>
  </schedule>
  <rech_info IsMaster='1' NumOfPlayer='2' IPAddrOfMaster='192.168.0.10' IPType='0' IPAddr='192.168.0.11' SubnetMask='255.255.255.0' Gateway='192.168.0.1' TypeOfNetwork='0' WirelessGroupName='group1' nImageDuration='10'/>
</rsp>)";

const Lines kExamplePolicy = {"bError=0",
                              "nCheckPeriod=30",
                              "nProjectID=1001",
                              "strVersion=1.2",
                              "nItemCount=2",
                              "nTotalSize=3145728",
                              "stExpiration=2016-12-31 0:0:0 0",
                              "IsMaster=1",
                              "NumOfPlayer=2",
                              "IPAddrOfMaster=192.168.0.10",
                              "IPAddr=192.168.0.11",
                              "SubnetMask=255.255.255.0",
                              "Gateway=192.168.0.1",
                              "WirelessGroupName=group1",
                              "nImageDuration=10",
                              "schedule 0-0-0 9:0:0 0 to 0-0-0 18:30:0 0",
                              "item A1|intro.mp4|1048576|mp4|1",
                              "item A2|logo.jpg|2097152|jpg|2"};

const std::string kEmptySchedule = "schedule 0-0-0 0:0:0 0 to 0-0-0 0:0:0 0";

} // namespace

TEST_F(ScheduleDocument, IsReadCompletelyAndLoggedInOrder)
{
    EXPECT_TRUE(Parse(kExample));
    Lines expected;
    const auto add = [&expected](const std::string& function, const std::vector<std::string>& messages) {
        const Lines lines = ScheduleLines(function, messages);
        expected.insert(expected.end(), lines.begin(), lines.end());
    };
    // A line end and the indentation behind it are a piece of text each.
    const std::vector<std::string> lineEnd(1, "OnElementData - Unknown Element \n");
    const std::vector<std::string> newLine(2, lineEnd[0]);
    const std::string unknown = "OnEndElement - Unknown element";
    add("OnElementData", newLine);
    add("ParsePolicyAttribute", {"Policy: Check Period is 30 minutes \n", kMissingAttribute, kMissingAttribute,
                                 kMissingAttribute, kMissingAttribute});
    add("OnEndElement", {unknown});
    add("OnElementData", newLine);
    add("ParseProjectAttribute", {"Project - id 1001\n", "Project - version 1.2\n", "Project - item_count 2\n",
                                  "Project - total_size 3145728\n", "Project - Expiration 2016-12-31 \n"});
    add("OnEndElement", {unknown});
    add("OnElementData", newLine);
    add("ParseScheduleAttribute", {"Schedule - start_time 9 : 0 : 0\n", "Schedule - end_time 18 : 30 : 0\n"});
    add("OnElementData", newLine);
    add("ParseItemElements", {"item - id A1 \n", "item - order 1 \n"});
    add("OnEndElement", {"OnEndElement - name closes \n", "OnEndElement - size closes \n",
                         "OnEndElement - format closes (intro.mp4) \n"});
    add("OnElementData", newLine);
    add("ParseItemElements", {"item - id A2 \n", "item - order 2 \n"});
    add("OnEndElement", {"OnEndElement - name closes \n", "OnEndElement - size closes \n",
                         "OnEndElement - format closes (logo.jpg) \n"});
    add("OnElementData", newLine);
    add("OnElementData", newLine);
    add("ParseRECHInfoElements",
        {"rech_info - IsMaster 1\n", "rech_info - NumOfPlayer 2\n", "rech_info - IPAddrOfMaster 192.168.0.10\n",
         "rech_info - IPType 0\n", "rech_info - IPAddr 192.168.0.11\n", "rech_info - SubnetMask 255.255.255.0\n",
         "rech_info - Gateway 192.168.0.1\n", "rech_info - TypeOfNetwork 0\n", "rech_info - Gateway group1\n",
         "rech_info - nImageDuration 10\n"});
    add("OnEndElement", {unknown});
    add("OnElementData", lineEnd);
    expected.push_back(SerializerLine("ParseHttpResponse End !!!!\n"));
    EXPECT_EQ(Take(), expected);
    EXPECT_EQ(Changes(Policy()), kExamplePolicy);
}

TEST_F(ScheduleDocument, NestingIsNotChecked)
{
    const struct {
        const char* document;
        Lines changes;
    } cases[] = {
        {"<rsp state='ok'/>", {"bError=0"}},
        {"<rsp/>", {}},
        {"<other/>", {}},
        {"<schedule/>", {kEmptySchedule}},
        {"<policy period='5'><rsp state='ok'/></policy>", {"bError=0", "nCheckPeriod=5"}},
        {"<rsp><schedule><item id='A'/><item id='B'/><item id='C'/></schedule><schedule/></rsp>",
         {kEmptySchedule, "item A||0||0", "item B||0||0", "item C||0||0", kEmptySchedule}},
        // An item outside waits for the schedule that closes next.
        {"<rsp><item id='A'/><schedule><item id='B'/></schedule><item id='C'/></rsp>",
         {kEmptySchedule, "item A||0||0", "item B||0||0"}},
        // Of schedules in each other the inner one takes all that came before.
        {"<rsp><schedule start_time='01:00:00' end_time='02:00:00'><item id='A'/>"
         "<schedule start_time='03:00:00' end_time='04:00:00'><item id='B'/></schedule><item id='C'/></schedule></rsp>",
         {"schedule 0-0-0 3:0:0 0 to 0-0-0 4:0:0 0", "item A||0||0", "item B||0||0", kEmptySchedule, "item C||0||0"}},
        {"<rsp><schedule start_time='01:00:00'><schedule end_time='04:00:00'/></schedule></rsp>",
         {"schedule 0-0-0 1:0:0 0 to 0-0-0 4:0:0 0", kEmptySchedule}},
        {"<schedule><item id='A' order='1'><item id='B'/></item></schedule>",
         {kEmptySchedule, "item B||0||1", "item ||0||0"}},
        {"<schedule><item><rech_info IPType='3'/><name>a</name></item></schedule>",
         {"IPType=3", kEmptySchedule, "item |a|0||0"}},
        // Texts outside an item go to the next one.
        {"<schedule><name>a</name><item id='A'><name>b</name></item></schedule>", {kEmptySchedule, "item A|ab|0||0"}},
        {"<schedule><item><name>a<b>c</b>d</name></item></schedule>", {kEmptySchedule, "item |acd|0||0"}},
    };
    for (const auto& expected : cases) {
        container = CVQMScheduleContainer();
        EXPECT_TRUE(Parse(expected.document)) << expected.document;
        EXPECT_EQ(Changes(Policy()), expected.changes) << expected.document;
    }
}

TEST_F(ScheduleDocument, ItemTextsAreTakenAsTheyAre)
{
    const struct {
        const char* item;
        const char* result;
    } cases[] = {
        {"<name>clip</name><size>12MB</size><format>mp4</format>", "item |clip.mp4|12|mp4|0"},
        {"<name>clip</name><size>abc</size><format/>", "item |clip.|0||0"},
        {"<name>clip</name>", "item |clip|0||0"},
        {"<format>mp4</format><name>clip</name>", "item |.mp4clip|0|mp4|0"},
        {"<format>a</format><format>b</format>", "item |.a.ab|0|ab|0"},
        {"<name> a\n b </name><format> c</format>", "item | a\n b . c|0| c|0"},
        {"<name>a&amp;b</name><format>m&#112;4</format>", "item |a&b.mp4|0|mp4|0"},
        {"<name><![CDATA[<%s>]]></name>", "item |<%s>|0||0"},
        {"<name>a</name><name>b</name>", "item |ab|0||0"},
        {"<size>1</size><size>2</size>", "item ||2||0"},
        {"<size>\n5</size>", "item ||5||0"},
        {"<size>5\n</size>", "item ||0||0"},
        {"<size>5&#48;6</size>", "item ||6||0"},
        {"<size>18446744073709551615</size>", "item ||18446744073709551615||0"},
    };
    for (const auto& expected : cases) {
        container = CVQMScheduleContainer();
        EXPECT_TRUE(Parse("<schedule><item>" + std::string(expected.item) + "</item></schedule>"));
        EXPECT_EQ(Changes(Policy()), (Lines{kEmptySchedule, expected.result})) << expected.item;
    }
}

TEST_F(ScheduleDocument, WhatPrecedesAnErrorStaysAndWhatIsOpenWaits)
{
    EXPECT_FALSE(Parse("<rsp state='ok'><policy period='5'/><schedule/><schedule start_time='01:00:00'>"
                       "<item id='closed'/><item id='open'><name>a"));
    EXPECT_EQ(Changes(Policy()), (Lines{"bError=0", "nCheckPeriod=5", kEmptySchedule}));
    EXPECT_EQ(Take().back(), SerializerLine("  PraseError !!!!\n"));
    End("item");
    End("schedule");
    EXPECT_EQ(Changes(Policy()),
              (Lines{"bError=0", "nCheckPeriod=5", kEmptySchedule, "schedule 0-0-0 1:0:0 0 to 0-0-0 0:0:0 0",
                     "item closed||0||0", "item open|a|0||0"}));
}

TEST_F(ScheduleDocument, SecondDocumentAddsSchedulesAndOverwritesOtherFields)
{
    EXPECT_TRUE(Parse("<rsp state='ok'><policy period='5'/><project id='1' version='a'/>"
                      "<schedule start_time='01:00:00'/><rech_info IsMaster='1' IPAddr='x'/><item id='waits'/></rsp>"));
    EXPECT_TRUE(Parse("<rsp state='failed'><project version='b'/><schedule/><rech_info IsMaster='0'/></rsp>"));
    EXPECT_EQ(Changes(Policy()),
              (Lines{"bError=0", "nCheckPeriod=5", "nProjectID=1", "strVersion=b", "IPAddr=x",
                     "schedule 0-0-0 1:0:0 0 to 0-0-0 0:0:0 0", kEmptySchedule, "item waits||0||0"}));
    EXPECT_TRUE(Parse("<rsp/>"));
    EXPECT_TRUE(Policy().bError);
}

TEST_F(ScheduleDocument, ACopyIsTheListOfTheDocument)
{
    EXPECT_TRUE(Parse(kExample));
    _VQMPolicy target;
    target.listSchedule.resize(9);
    target.strVersion = "old";
    container.GetSturcture(&target);
    EXPECT_EQ(Changes(target), kExamplePolicy);
}

TEST_F(ScheduleDocument, LongAndOddTextsComeThroughWhole)
{
    const std::string text((std::size_t{1} << 20U) + 3, '%');
    EXPECT_TRUE(
        Parse("<schedule><item id='" + text + "'><name>" + text + "</name><format>%n</format></item></schedule>"));
    const Lines lines = Take();
    EXPECT_TRUE(lines[2] == ScheduleLine("ParseItemElements", "item - id " + text + " \n"));
    EXPECT_TRUE(lines[5] == ScheduleLine("OnEndElement", "OnEndElement - format closes (" + text + ".%n) \n"));
    EXPECT_TRUE(Changes(Policy())[1] == "item " + text + '|' + text + ".%n|0|%n|0");
}

TEST_F(ScheduleDocument, OfManyItemsAllAreKeptInOrder)
{
    std::string document = "<rsp>";
    Lines expected;
    for (int i = 0; i < 50; ++i) {
        document += "<schedule>";
        expected.push_back(kEmptySchedule);
        for (int j = 0; j < 40; ++j) {
            document += "<item id='" + std::to_string(i) + "' order='" + std::to_string(j) + "'/>";
            expected.push_back("item " + std::to_string(i) + "||0||" + std::to_string(j));
        }
        document += "</schedule>";
    }
    EXPECT_TRUE(Parse(document + "</rsp>"));
    EXPECT_EQ(Changes(Policy()), expected);
}

TEST_F(ScheduleDocument, IsReadOnSeveralThreadsAtOnce)
{
    std::vector<Lines> results(4);
    std::vector<std::thread> threads;
    threads.reserve(results.size());
    for (Lines& result : results) {
        threads.emplace_back([&result] {
            CVQMScheduleContainer own;
            CVQMXMLSerialize serializer;
            EXPECT_TRUE(serializer.Create());
            EXPECT_TRUE(serializer.Deserialize(kExample, &own));
            _VQMPolicy policy;
            own.GetSturcture(&policy);
            result = Changes(policy);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const Lines& result : results) {
        EXPECT_EQ(result, kExamplePolicy);
    }
}
