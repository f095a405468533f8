#include "Tests/Data/ScheduleFixture.h"

using recorder::Lines;
using recorder::Take;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class ScheduleEvents : public ScheduleTest {};

struct OtherSerializer : IVQMSerialize {
    bool Create() override { return true; }
    void Destroy() override {}
    bool Serialize(const CVQMDataSerializableObject* /*pObj*/, CVQMDataBufferObject* /*pBuffer*/) override
    {
        return false;
    }
    bool Deserialize(const char* /*pData*/, CVQMDataSerializableObject* /*pObj*/) override { return true; }
};

} // namespace

TEST_F(ScheduleEvents, OnlyTheXmlSerializerIsAskedForThem)
{
    OtherSerializer other;
    EXPECT_FALSE(container.ReadFrom(nullptr));
    EXPECT_FALSE(container.ReadFrom(&other));
    EXPECT_THAT(Take(),
                ElementsAre(ScheduleLine("ReadFrom", "CVQMScheduleContainer::ReadFrom - pSerialize is null\n"),
                            ScheduleLine("ReadFrom", "CVQMScheduleContainer::ReadFrom - pSerialize is not the parent "
                                                     "of CVQMXMLSerialize object\n")));
}

TEST_F(ScheduleEvents, WhatIsMissingIsLoggedAndRefused)
{
    const char* attributes[] = {nullptr};
    const std::string noElement = "CVQMScheduleContainer::ReadFrom - pElement is null\n";
    const std::string noAttributes = "CVQMScheduleContainer::ReadFrom - pAtt is null\n";
    const std::string noText = "CVQMScheduleContainer::ReadFrom - pText is null\n";
    const std::string unknown = "CVQMScheduleContainer::ReadFrom - Unknown parsing step\n";
    const struct {
        int step;
        bool result;
        const char* name;
        const char** attributes;
        const char* text;
        Lines messages;
    } cases[] = {
        {0, true, "rsp", attributes, nullptr, {}},
        {0, false, nullptr, attributes, "x", {noElement}},
        {0, false, nullptr, nullptr, nullptr, {noElement}},
        {0, false, "rsp", nullptr, "x", {noAttributes}},
        {1, true, "rsp", nullptr, nullptr, {}},
        {1, false, nullptr, attributes, "x", {noElement}},
        {2, false, "rsp", attributes, nullptr, {noText}},
        {2, false, nullptr, nullptr, nullptr, {noText}},
        {3, true, "rsp", attributes, "x", {unknown}},
        {3, true, nullptr, nullptr, nullptr, {unknown}},
        {-1, true, "rsp", attributes, "x", {unknown}},
    };
    for (const auto& expected : cases) {
        EventSource source(expected.step, expected.name, expected.attributes, expected.text);
        EXPECT_EQ(container.ReadFrom(&source), expected.result) << expected.step;
        EXPECT_EQ(Take(), ScheduleLines("ReadFrom", expected.messages)) << expected.step;
    }
    EventSource text(2, nullptr, nullptr, "x");
    EXPECT_TRUE(container.ReadFrom(&text));
    EXPECT_THAT(Take(), ElementsAre(ScheduleLine("OnElementData", "OnElementData - Unknown Element \n")));
}

TEST_F(ScheduleEvents, NullArgumentsOfAStepDoNothing)
{
    const char* attributes[] = {"id", "A", nullptr};
    container.OnStartElement(nullptr, attributes);
    container.OnStartElement("rsp", nullptr);
    container.OnStartElement("name", nullptr);
    container.OnEndElement(nullptr);
    container.OnElementData(nullptr);
    container.ParseItemElements(nullptr, attributes);
    container.ParseItemElements("item", nullptr);
    container.ParseItemElements("name", nullptr);
    EXPECT_THAT(Take(), IsEmpty());
    container.OnElementData("x");
    EXPECT_THAT(Take(), ElementsAre(ScheduleLine("OnElementData", "OnElementData - Unknown Element \n")))
        << "no text is open";
    container.ParseItemElements("rsp", attributes);
    container.ParseItemElements("Item", attributes);
    EXPECT_THAT(Take(), ElementsAre(ScheduleLine("ParseItemElements", "Unknown Element\n"),
                                    ScheduleLine("ParseItemElements", "Unknown Element\n")));
    EXPECT_THAT(Changes(Policy()), IsEmpty());
}

TEST_F(ScheduleEvents, ElementNamesAreExact)
{
    for (const char* name : {"RSP", "Policy", "policy ", "projects", "Schedule", "ITEM", "names", "Size", "fmt",
                             "Rech_info", "rech", "", "xmlns:rsp"}) {
        Start(name, {"state", "ok", "id", "7"});
        End(name);
        EXPECT_THAT(Take(), ElementsAre(ScheduleLine("OnStartElement", "OnStartElement - Unknown Element\n"),
                                        ScheduleLine("OnEndElement", "OnEndElement - Unknown element")));
    }
    EXPECT_THAT(Changes(Policy()), IsEmpty());
}

TEST_F(ScheduleEvents, EndsThatMeanNothingAreLogged)
{
    const std::string unknown = ScheduleLine("OnEndElement", "OnEndElement - Unknown element");
    for (const char* name : {"policy", "project", "rech_info", "name", "size", "format"}) {
        End(name);
        EXPECT_THAT(Take(), ElementsAre(unknown)) << name;
    }
    End("rsp");
    EXPECT_THAT(Take(), IsEmpty());
    EXPECT_THAT(Changes(Policy()), IsEmpty());
}

TEST_F(ScheduleEvents, OnlyTheOpenTextCloses)
{
    const char* const names[] = {"name", "size", "format"};
    const char* const messages[] = {"OnEndElement - name closes \n", "OnEndElement - size closes \n",
                                    "OnEndElement - format closes (.) \n"};
    const std::string unknown = ScheduleLine("OnEndElement", "OnEndElement - Unknown element");
    const std::string noText = ScheduleLine("OnElementData", "OnElementData - Unknown Element \n");
    for (int open = 0; open < 3; ++open) {
        Start(names[open], {"ignored", "1"});
        for (int other = 0; other < 3; ++other) {
            if (other != open) {
                End(names[other]);
                EXPECT_THAT(Take(), ElementsAre(unknown)) << names[open] << ' ' << names[other];
            }
        }
        Piece(""); // still open
        EXPECT_THAT(Take(), IsEmpty());
        End(names[open]);
        Piece("");
        End(names[open]);
        EXPECT_THAT(Take(), ElementsAre(ScheduleLine("OnEndElement", messages[open]), noText, unknown));
    }
}

TEST_F(ScheduleEvents, ATextStateOutlivesEverythingButItsEndAndTheItems)
{
    Start("name");
    for (const char* other : {"rsp", "policy", "project", "schedule", "rech_info", "item", "unknown"}) {
        Start(other);
    }
    for (const char* other : {"rsp", "policy", "project", "schedule", "rech_info", "unknown"}) {
        End(other);
    }
    Take();
    Piece("kept");
    EXPECT_THAT(Take(), IsEmpty());
    End("item");
    Piece("lost");
    EXPECT_THAT(Take(), ElementsAre(ScheduleLine("OnElementData", "OnElementData - Unknown Element \n")));
    End("schedule");
    const std::string empty = "schedule 0-0-0 0:0:0 0 to 0-0-0 0:0:0 0";
    EXPECT_EQ(Changes(Policy()), (Lines{empty, empty, "item |kept|0||0"}));
}

TEST_F(ScheduleEvents, AnItemsEndEmptiesItForTheNext)
{
    Start("item", {"id", "A", "order", "2"});
    Start("name");
    Piece("clip");
    End("name");
    Start("size");
    Piece("12MB");
    End("size");
    Start("format");
    Piece("mp4");
    End("format");
    End("item");
    End("item"); // of nothing: an empty one
    End("schedule");
    EXPECT_EQ(Changes(Policy()),
              (Lines{"schedule 0-0-0 0:0:0 0 to 0-0-0 0:0:0 0", "item A|clip.mp4|12|mp4|2", "item ||0||0"}));
}

TEST_F(ScheduleEvents, ASchedulesEndEmptiesItForTheNext)
{
    Start("schedule", {"start_time", "09:00:00", "end_time", "18:30:00"});
    Start("item", {"id", "A", "order", "1"});
    End("item");
    End("schedule");
    End("schedule");
    EXPECT_EQ(Changes(Policy()), (Lines{"schedule 0-0-0 9:0:0 0 to 0-0-0 18:30:0 0", "item A||0||1",
                                        "schedule 0-0-0 0:0:0 0 to 0-0-0 0:0:0 0"}));
}

TEST_F(ScheduleEvents, AnOpenItemIsNotPartOfThePolicyYet)
{
    Start("schedule", {"start_time", "09:00:00", "end_time", "10:00:00"});
    Start("item", {"id", "open", "order", "1"});
    End("schedule");
    const Lines first = {"schedule 0-0-0 9:0:0 0 to 0-0-0 10:0:0 0"};
    EXPECT_EQ(Changes(Policy()), first);
    Start("schedule", {"start_time", "11:00:00", "end_time", "12:00:00"});
    EXPECT_EQ(Changes(Policy()), first) << "an open schedule is not either";
    End("item");
    EXPECT_EQ(Changes(Policy()), first);
    End("schedule");
    EXPECT_EQ(Changes(Policy()), (Lines{first[0], "schedule 0-0-0 11:0:0 0 to 0-0-0 12:0:0 0", "item open||0||1"}));
}

TEST_F(ScheduleEvents, TextIsTheSameInEverySplit)
{
    const std::string name = "intro \xc3\xa9 100%s";
    const std::string format = "mp4";
    const auto readItem = [this](const Lines& names, const Lines& sizes, const Lines& formats) {
        Start("item", {"id", "A"});
        Start("name");
        for (const std::string& piece : names) {
            Piece(piece);
        }
        End("name");
        Start("size");
        for (const std::string& piece : sizes) {
            Piece(piece);
        }
        End("size");
        Start("format");
        for (const std::string& piece : formats) {
            Piece(piece);
        }
        End("format");
        End("item");
        End("schedule");
        _VQMPolicy policy = Policy();
        const _VQMContentInfo& item = policy.listSchedule.back().listContents.back();
        return item.strName + '|' + std::to_string(item.nSize) + '|' + item.strFormat;
    };
    for (std::size_t i = 0; i <= name.size(); ++i) {
        for (std::size_t j = 0; j <= format.size(); ++j) {
            EXPECT_EQ(readItem({name.substr(0, i), name.substr(i)}, {"123"}, {format.substr(0, j), format.substr(j)}),
                      name + ".mp4|123|mp4");
        }
    }
    // Of a size only the last piece counts.
    const std::string size = "98765";
    for (std::size_t i = 0; i < size.size(); ++i) {
        EXPECT_EQ(readItem({"x"}, {size.substr(0, i), size.substr(i)}, {"y"}), "x.y|" + size.substr(i) + "|y");
    }
    EXPECT_EQ(readItem({"x"}, {size, ""}, {"y"}), "x.y|0|y");
    EXPECT_EQ(readItem({}, {}, {}), ".|0|");
    EXPECT_EQ(readItem({"clip"}, {"abc"}, {}), "clip.|0|");
    EXPECT_EQ(readItem({}, {"18446744073709551616"}, {"mp4"}), ".mp4|0|mp4");
}
