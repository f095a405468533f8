#include "Tests/Data/ScheduleFixture.h"

#include <algorithm>

using recorder::Lines;
using recorder::Take;
using testing::IsEmpty;

namespace {

class ScheduleAttributes : public ScheduleTest {
protected:
    /// Closes what `element` opened, so that it shows in the policy.
    void Close(const std::string& element)
    {
        if (element == "item") {
            End("item");
        }
        if (element == "item" || element == "schedule") {
            End("schedule");
        }
    }
};

/// How the handlers differ.
const struct Handler {
    const char* element;
    const char* function;
    std::size_t slots;
    const char* unknown;
    /// An attribute that it knows, its line and what it changes.
    const char* attribute;
    const char* value;
    const char* message;
    const char* change;
} kHandlers[] = {
    {"policy", "ParsePolicyAttribute", 5, "Policy: Unknown Attributes\n", "period", "30",
     "Policy: Check Period is 30 minutes \n", "nCheckPeriod=30"},
    {"project", "ParseProjectAttribute", 5, "Project: Unknown Attributes\n", "version", "1.2",
     "Project - version 1.2\n", "strVersion=1.2"},
    {"schedule", "ParseScheduleAttribute", 2, "Schedule: Unknown Attributes\n", "end_time", "09:00:01",
     "Schedule - end_time 9 : 0 : 1\n", "schedule 0-0-0 0:0:0 0 to 0-0-0 9:0:1 0"},
    {"item", "ParseItemElements", 2, "item: Unknown Attributes\n", "id", "A", "item - id A \n", "item A||0||0"},
    {"rech_info", "ParseRECHInfoElements", 10, "rech_info: Unknown Attributes\n", "IPType", "3",
     "rech_info - IPType 3\n", "IPType=3"},
};

/// One handler's lines.
Lines Repeated(const Handler& handler, std::size_t unknown, std::size_t known, std::size_t missing)
{
    Lines lines(unknown, ScheduleLine(handler.function, handler.unknown));
    lines.insert(lines.end(), known, ScheduleLine(handler.function, handler.message));
    lines.insert(lines.end(), missing, ScheduleLine(handler.function, kMissingAttribute));
    return lines;
}

} // namespace

TEST_F(ScheduleAttributes, EachIsConvertedStoredAndLogged)
{
    const struct {
        const char* element;
        const char* attribute;
        const char* value;
        const char* message;
        const char* change; ///< null: none
    } cases[] = {
        {"policy", "period", "30", "Policy: Check Period is 30 minutes \n", "nCheckPeriod=30"},
        {"policy", "period", "-5", "Policy: Check Period is -5 minutes \n", "nCheckPeriod=-5"},
        {"policy", "period", "2147483648", "Policy: Check Period is -2147483648 minutes \n",
         "nCheckPeriod=-2147483648"},
        {"policy", "period", "soon", "Policy: Check Period is 0 minutes \n", nullptr},
        {"project", "id", "1001", "Project - id 1001\n", "nProjectID=1001"},
        {"project", "id", "18446744073709551615", "Project - id 18446744073709551615\n",
         "nProjectID=18446744073709551615"},
        {"project", "id", "-1", "Project - id 0\n", nullptr},
        {"project", "version", " 1.2 beta%s", "Project - version  1.2 beta%s\n", "strVersion= 1.2 beta%s"},
        {"project", "version", "", "Project - version \n", nullptr},
        {"project", "item_count", "-2", "Project - item_count -2\n", "nItemCount=-2"},
        {"project", "total_size", "3145728", "Project - total_size 3145728\n", "nTotalSize=3145728"},
        {"project", "total_size", "9223372036854775808", "Project - total_size 9223372036854775808\n",
         "nTotalSize=9223372036854775808"},
        {"project", "expiration", "2016-12-31", "Project - Expiration 2016-12-31 \n",
         "stExpiration=2016-12-31 0:0:0 0"},
        {"schedule", "start_time", "09:05:07", "Schedule - start_time 9 : 5 : 7\n",
         "schedule 0-0-0 9:5:7 0 to 0-0-0 0:0:0 0"},
        {"schedule", "end_time", "18:30:59", "Schedule - end_time 18 : 30 : 59\n",
         "schedule 0-0-0 0:0:0 0 to 0-0-0 18:30:59 0"},
        {"item", "id", " A%d ", "item - id  A%d  \n", "item  A%d ||0||0"},
        {"item", "order", "-3", "item - order -3 \n", "item ||0||-3"},
        {"rech_info", "IsMaster", "1", "rech_info - IsMaster 1\n", "IsMaster=1"},
        {"rech_info", "IsMaster", "01", "rech_info - IsMaster 1\n", "IsMaster=1"},
        {"rech_info", "IsMaster", "1x", "rech_info - IsMaster 1\n", "IsMaster=1"},
        {"rech_info", "IsMaster", "4294967297", "rech_info - IsMaster 1\n", "IsMaster=1"},
        {"rech_info", "IsMaster", "2", "rech_info - IsMaster 2\n", nullptr},
        {"rech_info", "IsMaster", "-1", "rech_info - IsMaster -1\n", nullptr},
        {"rech_info", "IsMaster", "true", "rech_info - IsMaster 0\n", nullptr},
        {"rech_info", "IsMaster", "", "rech_info - IsMaster 0\n", nullptr},
        {"rech_info", "NumOfPlayer", "-3", "rech_info - NumOfPlayer -3\n", "NumOfPlayer=-3"},
        {"rech_info", "IPAddrOfMaster", "no address", "rech_info - IPAddrOfMaster no address\n",
         "IPAddrOfMaster=no address"},
        {"rech_info", "IPType", "99", "rech_info - IPType 99\n", "IPType=99"},
        {"rech_info", "IPAddr", "fe80::1%eth0", "rech_info - IPAddr fe80::1%eth0\n", "IPAddr=fe80::1%eth0"},
        {"rech_info", "SubnetMask", "/24", "rech_info - SubnetMask /24\n", "SubnetMask=/24"},
        {"rech_info", "Gateway", "%s", "rech_info - Gateway %s\n", "Gateway=%s"},
        {"rech_info", "TypeOfNetwork", "4x", "rech_info - TypeOfNetwork 4\n", "TypeOfNetwork=4"},
        {"rech_info", "WirelessGroupName", "50% off", "rech_info - Gateway 50% off\n", "WirelessGroupName=50% off"},
        {"rech_info", "nImageDuration", "10", "rech_info - nImageDuration 10\n", "nImageDuration=10"},
    };
    for (const auto& expected : cases) {
        container = CVQMScheduleContainer();
        const Handler* handler = kHandlers;
        while (std::string(handler->element) != expected.element) {
            ++handler;
        }
        Start(expected.element, {expected.attribute, expected.value});
        Lines lines = {ScheduleLine(handler->function, expected.message)};
        lines.resize(handler->slots, ScheduleLine(handler->function, kMissingAttribute));
        EXPECT_EQ(Take(), lines) << expected.message;
        Close(expected.element);
        Lines changes = Changes(Policy());
        if (std::string(expected.element) == "item") {
            changes.erase(changes.begin()); // its schedule
        }
        EXPECT_EQ(changes, expected.change != nullptr ? Lines{expected.change} : Lines{}) << expected.message;

        // Once more, after another value: the later one wins.
        container = CVQMScheduleContainer();
        Start(expected.element, {expected.attribute, "1", expected.attribute, expected.value});
        Close(expected.element);
        Lines again = Changes(Policy());
        if (std::string(expected.element) == "item") {
            again.erase(again.begin());
        }
        EXPECT_EQ(again, changes) << expected.message;
        Take();
    }
}

TEST_F(ScheduleAttributes, ARepeatedOneIsLoggedEachTime)
{
    for (const Handler& handler : kHandlers) {
        Start(handler.element, {handler.attribute, handler.value, handler.attribute, handler.value});
        EXPECT_EQ(Take(), Repeated(handler, 0, 2, handler.slots - 2)) << handler.element;
    }
}

TEST_F(ScheduleAttributes, AFixedNumberIsLookedAt)
{
    for (const Handler& handler : kHandlers) {
        Attributes attributes;
        for (std::size_t count = 0; count < handler.slots + 4; ++count) {
            Start(handler.element, attributes);
            const std::size_t seen = std::min(count, handler.slots);
            EXPECT_EQ(Take(), Repeated(handler, seen, 0, handler.slots - seen)) << handler.element << count;
            attributes.insert(attributes.end(), {"other", "1"});
        }
    }
}

TEST_F(ScheduleAttributes, LastSlotIsReadAndFurtherOnesAreIgnored)
{
    for (const Handler& handler : kHandlers) {
        container = CVQMScheduleContainer();
        Attributes attributes;
        for (std::size_t i = 0; i + 1 < handler.slots; ++i) {
            attributes.insert(attributes.end(), {"other", "1"});
        }
        Attributes last = attributes;
        last.insert(last.end(), {handler.attribute, handler.value});
        Start(handler.element, last);
        EXPECT_EQ(Take(), Repeated(handler, handler.slots - 1, 1, 0)) << handler.element;
        Close(handler.element);
        EXPECT_EQ(Changes(Policy()).back(), handler.change);

        container = CVQMScheduleContainer();
        Attributes next = attributes;
        next.insert(next.end(), {"other", "1", handler.attribute, handler.value});
        Start(handler.element, next);
        EXPECT_EQ(Take(), Repeated(handler, handler.slots, 0, 0)) << handler.element;
        EXPECT_THAT(Changes(Policy()), IsEmpty());
    }
}

TEST_F(ScheduleAttributes, AttributeWithoutValueIsSkipped)
{
    for (const Handler& handler : kHandlers) {
        container = CVQMScheduleContainer();
        Start(handler.element, {handler.attribute, nullptr, handler.attribute, handler.value});
        Lines lines = {ScheduleLine(handler.function, kMissingAttribute),
                       ScheduleLine(handler.function, handler.message)};
        lines.resize(handler.slots, ScheduleLine(handler.function, kMissingAttribute));
        EXPECT_EQ(Take(), lines) << handler.element;
        Close(handler.element);
        EXPECT_EQ(Changes(Policy()).back(), handler.change);
    }
}

TEST_F(ScheduleAttributes, ANullNameEndsTheList)
{
    for (const Handler& handler : kHandlers) {
        StartWithList(handler.element, {nullptr, "value", handler.attribute, handler.value, nullptr});
        EXPECT_EQ(Take(), Repeated(handler, 0, 0, handler.slots)) << handler.element;
        StartWithList(handler.element, {"other", "1", nullptr, nullptr, handler.attribute, handler.value, nullptr});
        EXPECT_EQ(Take(), Repeated(handler, 1, 0, handler.slots - 1)) << handler.element;
    }
    EXPECT_THAT(Changes(Policy()), IsEmpty());
}

TEST_F(ScheduleAttributes, NoListIsAnEmptyOne)
{
    const struct {
        void (CVQMScheduleContainer::*parse)(const char**);
        const char* name;
        std::size_t slots;
    } cases[] = {
        {&CVQMScheduleContainer::ParsePolicyAttribute, "ParsePolicyAttribute", 5},
        {&CVQMScheduleContainer::ParseProjectAttribute, "ParseProjectAttribute", 5},
        {&CVQMScheduleContainer::ParseScheduleAttribute, "ParseScheduleAttribute", 2},
        {&CVQMScheduleContainer::ParseRECHInfoElements, "ParseRECHInfoElements", 10},
    };
    for (const auto& test : cases) {
        (container.*test.parse)(nullptr);
        EXPECT_EQ(recorder::Take(), ScheduleLines(test.name, std::vector<std::string>(test.slots, kMissingAttribute)));
    }
}

TEST_F(ScheduleAttributes, NamesAreExactAndTheElementsOwn)
{
    const struct {
        const char* element;
        Attributes names;
    } cases[] = {
        {"policy", {"Period", "period ", "id", "expiration", ""}},
        {"project", {"ID", "period", "Version", "itemcount", "start_time"}},
        {"schedule", {"start", "End_time"}},
        {"schedule", {"id", "order"}},
        {"item", {"Id", "name"}},
        {"rech_info",
         {"isMaster", "NumOfPlayers", "IPAddrofMaster", "IpType", "IPaddr", "Subnetmask", "gateway", "TypeOfNetworks",
          "WirelessGroup", "ImageDuration"}},
    };
    for (const auto& expected : cases) {
        const Handler* handler = kHandlers;
        while (std::string(handler->element) != expected.element) {
            ++handler;
        }
        Attributes attributes;
        for (const char* name : expected.names) {
            attributes.insert(attributes.end(), {name, "1"});
        }
        Start(expected.element, attributes);
        EXPECT_EQ(Take(), Repeated(*handler, handler->slots, 0, 0)) << expected.element;
    }
    EXPECT_THAT(Changes(Policy()), IsEmpty());
}

TEST_F(ScheduleAttributes, AllTenOfRechInfoLogTheirLines)
{
    Start("rech_info", {"IsMaster",       "1", "NumOfPlayer",   "2", "IPAddrOfMaster",    "a",
                        "IPType",         "3", "IPAddr",        "b", "SubnetMask",        "c",
                        "Gateway",        "d", "TypeOfNetwork", "4", "WirelessGroupName", "e",
                        "nImageDuration", "10"});
    EXPECT_EQ(Take(),
              ScheduleLines("ParseRECHInfoElements",
                            {"rech_info - IsMaster 1\n", "rech_info - NumOfPlayer 2\n",
                             "rech_info - IPAddrOfMaster a\n", "rech_info - IPType 3\n", "rech_info - IPAddr b\n",
                             "rech_info - SubnetMask c\n", "rech_info - Gateway d\n", "rech_info - TypeOfNetwork 4\n",
                             "rech_info - Gateway e\n", "rech_info - nImageDuration 10\n"}));
    EXPECT_EQ(Changes(Policy()),
              (Lines{"IsMaster=1", "NumOfPlayer=2", "IPAddrOfMaster=a", "IPType=3", "IPAddr=b", "SubnetMask=c",
                     "Gateway=d", "TypeOfNetwork=4", "WirelessGroupName=e", "nImageDuration=10"}));
}

TEST_F(ScheduleAttributes, FirstAttributeOfRspDecidesTheState)
{
    const struct {
        Attributes attributes;
        bool fromTrue;
        bool fromFalse;
    } cases[] = {
        {{}, true, true},
        {{"state", "ok"}, false, false},
        {{"state", "ok", "state", "failed"}, false, false},
        {{"state", "failed"}, true, false},
        {{"state", "OK"}, true, false},
        {{"state", "ok "}, true, false},
        {{"state", ""}, true, false},
        {{"State", "ok"}, true, false},
        {{"x", "y", "state", "ok"}, true, false},
        {{"x", "ok"}, true, false},
        {{"state", nullptr}, true, true},
    };
    for (const auto& expected : cases) {
        for (const bool before : {true, false}) {
            _VQMPolicy policy;
            policy.bError = before;
            container.SetStructure(&policy);
            Start("rsp", expected.attributes);
            EXPECT_EQ(Policy().bError, before ? expected.fromTrue : expected.fromFalse);
        }
    }
    _VQMPolicy policy;
    policy.bError = false;
    container.SetStructure(&policy);
    StartWithList("rsp", {nullptr, "ok", nullptr});
    EXPECT_TRUE(Policy().bError);
    EXPECT_THAT(Take(), IsEmpty());
}

TEST_F(ScheduleAttributes, ALongValueIsStoredAndLoggedWhole)
{
    std::string value;
    while (value.size() < (std::size_t{1} << 20U)) {
        value += "100%s%n%";
    }
    const char* const texts[][4] = {
        {"project", "ParseProjectAttribute", "version", "Project - version "},
        {"rech_info", "ParseRECHInfoElements", "IPAddr", "rech_info - IPAddr "},
        {"rech_info", "ParseRECHInfoElements", "WirelessGroupName", "rech_info - Gateway "},
    };
    for (const auto& text : texts) {
        Start(text[0], {text[2], value.c_str()});
        EXPECT_TRUE(Take().front() == ScheduleLine(text[1], text[3] + value + "\n")) << text[2];
    }
    EXPECT_TRUE(Policy().strVersion == value);
    Start("item", {"id", value.c_str()});
    EXPECT_TRUE(Take().front() == ScheduleLine("ParseItemElements", "item - id " + value + " \n"));
    Start("schedule", {"start_time", value.c_str()});
    EXPECT_TRUE(Take().front() ==
                ScheduleLine("ConvertHHMMSSTimeToVQMTime", "Cannot find first separator " + value + "\n"));
    Start("name");
    Piece(value);
    End("name");
    Take();
    Start("format");
    Piece("mp4");
    End("format");
    EXPECT_TRUE(Take().front() == ScheduleLine("OnEndElement", "OnEndElement - format closes (" + value + ".mp4) \n"));
}
