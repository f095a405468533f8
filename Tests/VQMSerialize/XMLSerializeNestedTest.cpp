#include "Tests/VQMSerialize/XMLSerializeTest.h"

// Events that do not come from the parser.

using parser_fault::BlocksInUse;
using recorder::Take;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

TEST_F(XMLSerialize, ANestedTextEventLeavesTheOuterTextUnchanged)
{
    target.onStep = [this](const std::string& line) {
        if (line == "step 2 text outer") {
            const char* const outer = serializer.GetParsingText();
            CVQMXMLSerialize::OnElementData(&serializer, "inner and more", 5);
            EXPECT_STREQ(outer, "outer");
        }
    };
    EXPECT_TRUE(Parse("<a>outer<b/>next</a>"));
    EXPECT_THAT(Take(), ElementsAre("XML_GetBuffer 20", "step 0 name a attributes", "step 2 text outer",
                                    "step 2 text inner", "step 0 name b attributes", "step 1 name b",
                                    "step 2 text next", "step 1 name a", "Destroy", kEnd));
}

TEST_F(XMLSerialize, EveryNestedTextEventLeavesTheOuterTextUnchanged)
{
    target.onStep = [this](const std::string& line) {
        if (line == "step 2 text outer") {
            const char* const outer = serializer.GetParsingText();
            for (int i = 0; i < 3; ++i) {
                CVQMXMLSerialize::OnElementData(&serializer, "inner", 5);
                EXPECT_STREQ(outer, "outer") << i;
                EXPECT_EQ(serializer.GetParsingText(), nullptr) << "the inner one's end resets the text";
            }
        }
    };
    EXPECT_TRUE(Parse("<a>outer<b/>next</a>"));
}

/// What an event resets when it ends within another one: exactly what it has set itself.
TEST_F(XMLSerialize, ANestedEventLeavesFieldsThatItDoesNotSet)
{
    const char* none[] = {nullptr};
    const struct {
        const char* event;
        std::function<void()> tell;
        bool name;
        bool attributes;
    } cases[] = {
        {"text", [this] { CVQMXMLSerialize::OnElementData(&serializer, "inner", 5); }, true, true},
        {"end", [this] { CVQMXMLSerialize::OnEndElement(&serializer, "inner"); }, false, true},
        {"start", [&] { CVQMXMLSerialize::OnStartElement(&serializer, "inner", none); }, false, false},
    };
    for (const auto& inner : cases) {
        target.onStep = [&](const std::string& line) {
            if (line == "step 0 name a attributes x 1") {
                inner.tell();
                const char* const name = serializer.GetParsingElementName();
                EXPECT_STREQ(name, inner.name ? "a" : nullptr) << inner.event;
                const char** const attributes = serializer.GetParsingAttributes();
                EXPECT_EQ(attributes != nullptr, inner.attributes) << inner.event;
                if (attributes != nullptr) {
                    EXPECT_STREQ(attributes[0], "x") << inner.event;
                }
                EXPECT_EQ(serializer.GetParsingText(), nullptr) << inner.event;
            }
        };
        EXPECT_TRUE(Parse("<a x='1'/>"));
    }
}

TEST_F(XMLSerialize, ANestedStartOrEndEventLeavesTheTextUnchanged)
{
    const char* none[] = {nullptr};
    target.onStep = [&](const std::string& line) {
        if (line == "step 2 text outer") {
            CVQMXMLSerialize::OnEndElement(&serializer, "inner");
            EXPECT_STREQ(serializer.GetParsingText(), "outer");
            CVQMXMLSerialize::OnStartElement(&serializer, "inner", none);
            EXPECT_STREQ(serializer.GetParsingText(), "outer");
            EXPECT_EQ(serializer.GetParsingElementName(), nullptr);
        }
    };
    EXPECT_TRUE(Parse("<a>outer</a>"));
}

TEST_F(XMLSerialize, AnExceptionResetsTheFieldsThatItsEventSet)
{
    const char* attributes[] = {"x", "1", nullptr};
    EXPECT_TRUE(Parse("<a/>")); // sets the target
    Take();
    target.onStep = [&](const std::string& line) {
        if (line.rfind("step 0", 0) == 0) {
            EXPECT_THROW(CVQMXMLSerialize::OnElementData(&serializer, "inner", 5), int);
            EXPECT_EQ(serializer.GetParsingText(), nullptr);
            EXPECT_STREQ(serializer.GetParsingElementName(), "a");
            EXPECT_EQ(serializer.GetParsingAttributes(), attributes);
        }
        throw 1;
    };
    EXPECT_THROW(CVQMXMLSerialize::OnStartElement(&serializer, "a", attributes), int);
    EXPECT_EQ(serializer.GetParsingElementName(), nullptr);
    EXPECT_EQ(serializer.GetParsingAttributes(), nullptr);
}

/// The target uses the very serializer that is reading it.
TEST_F(XMLSerialize, AParserInUseIsNeitherCreatedNorDestroyedNorUsedAgain)
{
    bool inside = false;
    int steps = 0;
    target.onStep = [&](const std::string&) {
        if (inside) {
            return;
        }
        inside = true;
        ++steps;
        Take();
        EXPECT_FALSE(serializer.Deserialize("<inner/>", &target));
        EXPECT_THAT(Take(), ElementsAre(kNoBuffer, "Destroy"));
        EXPECT_FALSE(serializer.Deserialize(nullptr, &target));
        EXPECT_FALSE(serializer.Deserialize("<inner/>", nullptr));
        Take();
        EXPECT_FALSE(serializer.Create());
        EXPECT_THAT(Take(), ElementsAre(Line("Create", " XML_ParserCreate is Failed!!!\n")));
        serializer.Destroy();
        EXPECT_THAT(Take(), ElementsAre("Destroy"));
        EXPECT_EQ(BlocksInUse() == 0, false) << "the parser is there";
        inside = false;
    };
    EXPECT_TRUE(Parse("<a>text<b/></a>"));
    EXPECT_EQ(steps, 5) << "every event has come";
    EXPECT_THAT(Take(), ElementsAre("Destroy", kEnd));
    EXPECT_EQ(BlocksInUse(), 0U);
    EXPECT_TRUE(Parse("<a/>")) << "and it can be used again";
}

TEST_F(XMLSerialize, AnotherSerializerReadsADocumentWithinADocument)
{
    target.onStep = [](const std::string& line) {
        if (line == "step 0 name b attributes") {
            struct Counter : CVQMDataSerializableObject {
                int steps = 0;
                void GetSturcture(void* /*pStructure*/) override {}
                void SetStructure(void* /*pStructure*/) override {}
                bool WriteTo(IVQMSerialize* /*pSerialize*/) override { return false; }
                bool ReadFrom(IVQMSerialize* /*pSerialize*/) override { return ++steps != 0; }
            } inner;
            CVQMXMLSerialize other;
            ASSERT_TRUE(other.Create());
            EXPECT_TRUE(other.Deserialize("<c>x</c>", &inner));
            EXPECT_EQ(inner.steps, 3);
        }
    };
    EXPECT_TRUE(Parse("<a><b/>y</a>"));
    EXPECT_EQ(target.text, "y");
}

TEST_F(XMLSerialize, WithoutATargetAnEventIsIgnored)
{
    const char* attributes[] = {nullptr};
    CVQMXMLSerialize::OnStartElement(&serializer, "a", attributes);
    EXPECT_EQ(serializer.GetParsingStep(), PARSING_START_ELEMENT);
    CVQMXMLSerialize::OnElementData(&serializer, "text", 4);
    EXPECT_EQ(serializer.GetParsingStep(), PARSING_ELEMENT_DATA);
    CVQMXMLSerialize::OnEndElement(&serializer, "a");
    EXPECT_EQ(serializer.GetParsingStep(), PARSING_END_ELEMENT);
    EXPECT_EQ(serializer.GetParsingElementName(), nullptr);
    EXPECT_EQ(serializer.GetParsingAttributes(), nullptr);
    EXPECT_EQ(serializer.GetParsingText(), nullptr);
    EXPECT_THAT(Take(), IsEmpty());
}

} // namespace
