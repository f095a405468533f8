#include "Tests/VQMSerialize/XMLSerializeTest.h"

// Events that do not come from the parser.

using recorder::Take;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

TEST_F(XMLSerialize, ATextToldAmidAnotherLeavesThatOneAlone)
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

TEST_F(XMLSerialize, WithoutATargetAnEventOnlyPasses)
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
