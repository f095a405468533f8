#include "Tests/VQMSerialize/XMLSerializeTest.h"

#include <algorithm>
#include <type_traits>
#include <vector>

#include <expat.h>

#include "Tests/Support/VirtualSlot.h"

using parser_fault::BlocksInUse;
using parser_fault::Creation;
using parser_fault::faults;
using recorder::Take;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

static_assert(PARSING_START_ELEMENT == 0 && PARSING_END_ELEMENT == 1 && PARSING_ELEMENT_DATA == 2);
static_assert(std::is_abstract_v<IVQMSerialize> && std::has_virtual_destructor_v<IVQMSerialize>);
static_assert(sizeof(IVQMSerialize) == sizeof(void*));

struct OneMoreOperation : IVQMSerialize {
    virtual void Last() = 0;
};

struct OneMoreOperationOfXML : CVQMXMLSerialize {
    virtual void Last() {}
};

} // namespace

TEST_F(XMLSerialize, OperationsLieInTheirOrder)
{
    EXPECT_EQ(VirtualSlot(&IVQMSerialize::Create), 0U);
    EXPECT_EQ(VirtualSlot(&IVQMSerialize::Destroy), 1U);
    EXPECT_EQ(VirtualSlot(&IVQMSerialize::Serialize), 2U);
    EXPECT_EQ(VirtualSlot(&IVQMSerialize::Deserialize), 3U);
    EXPECT_EQ(VirtualSlot(&OneMoreOperation::Last), 6U) << "the destructor takes 4 and 5";
    EXPECT_EQ(VirtualSlot(&OneMoreOperationOfXML::Last), 6U) << "no virtual operation of its own";
}

TEST_F(XMLSerialize, FieldsLieInTheirOrderAndStartEmpty)
{
    const std::vector<const void*> fields = {&serializer.m_pParser,      &serializer.m_pTarget,
                                             &serializer.m_nParsingStep, &serializer.m_pElementName,
                                             &serializer.m_ppAttributes, &serializer.m_pText};
    EXPECT_TRUE(std::is_sorted(fields.begin(), fields.end()));
    EXPECT_EQ(fields.front(), reinterpret_cast<const char*>(&serializer) + sizeof(void*));
    EXPECT_EQ(serializer.m_pParser, nullptr);
    EXPECT_EQ(serializer.m_pTarget, nullptr);
    EXPECT_EQ(serializer.GetParsingStep(), 0);
    EXPECT_EQ(serializer.GetParsingElementName(), nullptr);
    EXPECT_EQ(serializer.GetParsingAttributes(), nullptr);
    EXPECT_EQ(serializer.GetParsingText(), nullptr);
}

TEST_F(XMLSerialize, CreationReportsEveryFailure)
{
    const struct {
        Creation creation;
        const char* message;
    } cases[] = {
        {Creation::Null, " XML_ParserCreate is Failed!!!\n"},
        {Creation::StandardException, "CVQMXMLSerialize::Create - Error 100% full \n"},
        {Creation::OtherException, "CVQMXMLSerialize::Create - Unknown error \n"},
    };
    for (const auto& expected : cases) {
        faults().creation = expected.creation;
        EXPECT_FALSE(serializer.Create());
        EXPECT_THAT(Take(), ElementsAre(Line("Create", expected.message)));
        ExpectNoParser();
    }
}

TEST_F(XMLSerialize, CreationIsSilentAndOverwritesTheParser)
{
    ASSERT_TRUE(serializer.Create());
    XML_ParserStruct* const first = serializer.m_pParser;
    const std::size_t blocks = BlocksInUse();
    ASSERT_TRUE(serializer.Create());
    EXPECT_NE(serializer.m_pParser, first);
    EXPECT_EQ(BlocksInUse(), 2 * blocks) << "the first one is still there";
    EXPECT_THAT(Take(), IsEmpty());
    XML_ParserFree(first);

    XML_ParserStruct* const second = serializer.m_pParser;
    faults().creation = Creation::Null;
    EXPECT_FALSE(serializer.Create());
    EXPECT_EQ(serializer.m_pParser, nullptr) << "overwritten by what the failed creation gave";
    XML_ParserFree(second);
}

TEST_F(XMLSerialize, DestroyCanBeRepeatedAndTheDestructorCallsIt)
{
    serializer.Destroy();
    ASSERT_TRUE(serializer.Create());
    EXPECT_GT(BlocksInUse(), 0U);
    serializer.Destroy();
    ExpectNoParser();
    serializer.Destroy();
    EXPECT_THAT(Take(), ElementsAre("Destroy", "Destroy", "Destroy")) << "and no log line";
    {
        CVQMXMLSerialize leftAlone;
        ASSERT_TRUE(leftAlone.Create());
    }
    EXPECT_EQ(BlocksInUse(), 0U);
}

TEST_F(XMLSerialize, NullArgumentsLeaveTheParser)
{
    ASSERT_TRUE(serializer.Create());
    EXPECT_FALSE(serializer.Deserialize(nullptr, nullptr));
    EXPECT_FALSE(serializer.Deserialize(nullptr, &target));
    EXPECT_FALSE(serializer.Deserialize("<a/>", nullptr));
    EXPECT_NE(serializer.m_pParser, nullptr);
    EXPECT_EQ(serializer.m_pTarget, nullptr);
    const std::string noData = Line("Deserialize", "CVQMXMLSerialize::Deserialize - input serialized data is null \n");
    EXPECT_THAT(Take(), ElementsAre(noData, noData,
                                    Line("Deserialize", "CVQMXMLSerialize::Deserialize - output pObj is null \n")));
    EXPECT_TRUE(serializer.Deserialize("<a/>", &target));
}

TEST_F(XMLSerialize, EachDocumentNeedsItsCreate)
{
    EXPECT_TRUE(Parse("<a/>"));
    Take();
    EXPECT_FALSE(serializer.Deserialize("<b/>", &target));
    EXPECT_THAT(Take(), ElementsAre("XML_GetBuffer 4", kNoBuffer, "Destroy"));
    EXPECT_TRUE(Parse("<b/>"));
    EXPECT_FALSE(Parse("<b>"));
    EXPECT_TRUE(Parse("<b/>"));
}

TEST_F(XMLSerialize, RefusedBufferFails)
{
    faults().refuseBuffer = true;
    EXPECT_FALSE(Parse("<a/>"));
    EXPECT_THAT(Take(), ElementsAre("XML_GetBuffer 4", kNoBuffer, "Destroy"));
    EXPECT_EQ(serializer.m_pTarget, nullptr) << "the target is set once there is something to parse";
}

TEST_F(XMLSerialize, AfterADocumentOnlyTargetAndStepStay)
{
    const struct {
        const char* document;
        int step;
    } cases[] = {{"<a x='1'>y</a>", 1}, {"<a>", 0}, {"<a>text", 2}};
    for (const auto& expected : cases) {
        Parse(expected.document);
        EXPECT_EQ(serializer.m_pTarget, &target);
        EXPECT_EQ(serializer.GetParsingStep(), expected.step) << expected.document;
        EXPECT_EQ(serializer.GetParsingElementName(), nullptr);
        EXPECT_EQ(serializer.GetParsingAttributes(), nullptr);
        EXPECT_EQ(serializer.GetParsingText(), nullptr);
    }
}

TEST_F(XMLSerialize, CallbacksCheckTheirParameters)
{
    EXPECT_TRUE(Parse("<a/>")); // a target that would hear of it
    Take();
    const char* attributes[] = {nullptr};
    CVQMXMLSerialize::OnStartElement(nullptr, "a", attributes);
    CVQMXMLSerialize::OnStartElement(nullptr, nullptr, nullptr);
    CVQMXMLSerialize::OnStartElement(&serializer, nullptr, attributes);
    CVQMXMLSerialize::OnStartElement(&serializer, "a", nullptr);
    CVQMXMLSerialize::OnEndElement(nullptr, "a");
    CVQMXMLSerialize::OnElementData(nullptr, "a", 1);
    CVQMXMLSerialize::OnElementData(nullptr, nullptr, 1);
    CVQMXMLSerialize::OnElementData(&serializer, nullptr, 1);
    EXPECT_THAT(Take(), ElementsAre(Line("OnStartElement", "OnStartElement - User Data is null \n"),
                                    Line("OnStartElement", "OnStartElement - User Data is null \n"),
                                    Line("OnStartElement", " Parameter is Null!!!!\n"),
                                    Line("OnStartElement", " Parameter is Null!!!!\n"),
                                    Line("OnEndElement", "OnEndElement - User Data is null \n"),
                                    Line("OnElementData", "OnElementData - User Data is null \n"),
                                    Line("OnElementData", "OnElementData - User Data is null \n"),
                                    Line("OnElementData", "OnElementData - data is null \n")));
    EXPECT_EQ(serializer.GetParsingStep(), PARSING_END_ELEMENT);
}

TEST_F(XMLSerialize, CallbacksKeepTheLastTarget)
{
    EXPECT_TRUE(Parse("<a/>"));
    Take();
    const char* attributes[] = {"x", "1", "x", "2", nullptr};
    CVQMXMLSerialize::OnStartElement(&serializer, "b", attributes);
    CVQMXMLSerialize::OnElementData(&serializer, "text and more", 4);
    CVQMXMLSerialize::OnElementData(&serializer, "x", 0);
    CVQMXMLSerialize::OnEndElement(&serializer, nullptr);
    EXPECT_THAT(Take(), ElementsAre("step 0 name b attributes x 1 x 2", "step 2 text text", "step 2 text ", "step 1"));
    target.onStep = [](const std::string&) { throw 1; };
    EXPECT_THROW(CVQMXMLSerialize::OnEndElement(&serializer, "b"), int);
    EXPECT_EQ(serializer.GetParsingElementName(), nullptr);
}

TEST_F(XMLSerialize, AnImpossibleTextLengthDeliversNothing)
{
    EXPECT_TRUE(Parse("<a/>"));
    Take();
    EXPECT_NO_THROW(CVQMXMLSerialize::OnElementData(&serializer, "x", -1));
    EXPECT_THAT(Take(), IsEmpty());
}

TEST_F(XMLSerialize, WritingProducesNothing)
{
    CVQMDataBufferObject buffer;
    EXPECT_FALSE(serializer.Serialize(&target, &buffer));
    EXPECT_EQ(buffer.GetData(), nullptr);
    buffer.InsertData("abc", 3);
    EXPECT_FALSE(serializer.Serialize(&target, &buffer));
    EXPECT_FALSE(serializer.Serialize(nullptr, &buffer));
    EXPECT_FALSE(serializer.Serialize(nullptr, nullptr));
    EXPECT_EQ(std::string(buffer.GetData(), 3), "abc");
    EXPECT_EQ(buffer.GetDataSize(), 3U);
    EXPECT_THAT(Take(), IsEmpty());
}
