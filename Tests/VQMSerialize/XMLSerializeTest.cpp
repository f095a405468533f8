#include "VQMSerialize/VQMXMLSerialize.h"

#include <stdexcept>
#include <string>
#include <vector>

#include <dlfcn.h>
#include <expat.h>
#include <gmock/gmock.h>

#include "Tests/Platform/Recorder.h"

using recorder::Lines;
using recorder::Record;
using recorder::Take;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const recorder::LogOf kLog{"Quillmere", "VQMXMLSerialize.cpp"};
const std::string kEnd = kLog.Debug("Deserialize", "ParseHttpResponse End !!!!\n");
const std::string kParseError = kLog.Debug("Deserialize", "  PraseError !!!!\n");
const std::string kNoBuffer = kLog.Debug("Deserialize", "CVQMXMLSerialize::Deserialize-  XML_GetBuffer Failed!!!!\n");

enum class Creation { Real, Null, Standard, Other };
Creation creation = Creation::Real;
bool refuseBuffer = false;

/// Records the steps it is given; throws where it is told to.
class Target : public CVQMDataSerializableObject {
public:
    void GetSturcture(void* /*structure*/) override {}
    void SetStructure(void* /*structure*/) override {}
    bool WriteTo(IVQMSerialize* /*serializer*/) override { return false; }

    bool ReadFrom(IVQMSerialize* serializer) override
    {
        auto* const xml = dynamic_cast<CVQMXMLSerialize*>(serializer);
        std::string line = "step " + std::to_string(xml->GetParsingStep());
        line += xml->GetParsingElementName() != nullptr ? std::string(" name ") + xml->GetParsingElementName() : "";
        if (const char** attribute = xml->GetParsingAttributes()) {
            for (line += " attributes"; *attribute != nullptr; ++attribute) {
                line += std::string(" ") + *attribute;
            }
        }
        line += xml->GetParsingText() != nullptr ? std::string(" text ") + xml->GetParsingText() : "";
        Record(line);
        if (line == throwAt) {
            throw std::string("thrown at ") + line; // of no type that anyone would catch by chance
        }
        return false; // ignored
    }

    std::string throwAt;
};

/// Tells when it is destroyed through the virtual operation.
class Serializer : public CVQMXMLSerialize {
public:
    void Destroy() override
    {
        Record("Destroy");
        CVQMXMLSerialize::Destroy();
    }
    bool HasParser() const { return m_pParser != nullptr; }
};

class XMLSerialize : public testing::Test {
protected:
    XMLSerialize() { Take(); }
    ~XMLSerialize() override
    {
        creation = Creation::Real;
        refuseBuffer = false;
    }

    bool Parse(const std::string& document)
    {
        EXPECT_TRUE(serializer.Create());
        const bool result = serializer.Deserialize(document.c_str(), &target);
        EXPECT_FALSE(serializer.HasParser());
        return result;
    }

    Serializer serializer;
    Target target;
};

} // namespace

// Found before the parser's own, so that every outcome of its calls can be had.

XML_Parser XML_ParserCreate(const XML_Char* encoding)
{
    switch (creation) {
    case Creation::Null:
        return nullptr;
    case Creation::Standard:
        throw std::runtime_error("100% full");
    case Creation::Other:
        throw 1; // NOLINT(misc-throw-by-value-catch-by-reference)
    default:
        return XML_ParserCreate_MM(encoding, nullptr, nullptr);
    }
}

void* XML_GetBuffer(XML_Parser parser, int length)
{
    Record("XML_GetBuffer " + std::to_string(length));
    using Function = void* (*)(XML_Parser, int);
    static const auto real = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "XML_GetBuffer"));
    return refuseBuffer ? nullptr : real(parser, length);
}

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

TEST_F(XMLSerialize, EventsBeforeAnErrorStayDelivered)
{
    EXPECT_FALSE(Parse("<a>"));
    EXPECT_THAT(Take(), ElementsAre("XML_GetBuffer 3", "step 0 name a attributes", kParseError, "Destroy"));
}

TEST_F(XMLSerialize, NullArgumentsLeaveTheParser)
{
    ASSERT_TRUE(serializer.Create());
    EXPECT_FALSE(serializer.Deserialize(nullptr, nullptr));
    EXPECT_FALSE(serializer.Deserialize("<a/>", nullptr));
    EXPECT_TRUE(serializer.HasParser());
    EXPECT_THAT(
        Take(),
        ElementsAre(kLog.Debug("Deserialize", "CVQMXMLSerialize::Deserialize - input serialized data is null \n"),
                    kLog.Debug("Deserialize", "CVQMXMLSerialize::Deserialize - output pObj is null \n")));
    EXPECT_TRUE(serializer.Deserialize("<a/>", &target));
}

TEST_F(XMLSerialize, EachDocumentNeedsItsCreate)
{
    EXPECT_TRUE(Parse("<a/>"));
    EXPECT_TRUE(Parse("<b/>"));
}

TEST_F(XMLSerialize, RefusedBufferFails)
{
    refuseBuffer = true;
    EXPECT_FALSE(Parse("<a/>"));
    EXPECT_THAT(Take(), ElementsAre("XML_GetBuffer 4", kNoBuffer, "Destroy"));
}

TEST_F(XMLSerialize, CreationReportsEveryFailure)
{
    creation = Creation::Null;
    EXPECT_FALSE(serializer.Create());
    creation = Creation::Standard;
    EXPECT_FALSE(serializer.Create());
    creation = Creation::Other;
    EXPECT_FALSE(serializer.Create());
    EXPECT_THAT(Take(), ElementsAre(kLog.Debug("Create", " XML_ParserCreate is Failed!!!\n"),
                                    kLog.Debug("Create", "CVQMXMLSerialize::Create - Error 100% full \n"),
                                    kLog.Debug("Create", "CVQMXMLSerialize::Create - Unknown error \n")));
}

TEST_F(XMLSerialize, TargetsExceptionComesOutAfterTheParserIsFreed)
{
    for (const char* step : {"step 0 name a attributes", "step 2 text x", "step 1 name a"}) {
        target.throwAt = step;
        try {
            Parse("<a>x</a>");
            ADD_FAILURE() << step;
        } catch (const std::string& thrown) {
            EXPECT_EQ(thrown, std::string("thrown at ") + step);
        }
        EXPECT_FALSE(serializer.HasParser());
        EXPECT_EQ(serializer.GetParsingElementName(), nullptr);
        const Lines lines = Take();
        ASSERT_GE(lines.size(), 2U);
        EXPECT_EQ(lines[lines.size() - 2], step);
        EXPECT_EQ(lines.back(), "Destroy");
    }
    target.throwAt.clear();
    EXPECT_TRUE(Parse("<a/>"));
}

TEST_F(XMLSerialize, StoppedParserDeliversNothingMore)
{
    target.throwAt = "step 0 name a attributes";
    EXPECT_THROW(Parse("<a/>"), std::string); // the parser still tells the end of an empty element
    EXPECT_THAT(Take(), ElementsAre("XML_GetBuffer 4", "step 0 name a attributes", "Destroy"));
}

TEST_F(XMLSerialize, ExpandingEntitiesAreLimited)
{
    std::string document = "<!DOCTYPE a [<!ENTITY e0 'xxxxxxxxxx'>";
    for (int i = 1; i < 9; ++i) {
        const std::string inner = "&e" + std::to_string(i - 1) + ";";
        document += "<!ENTITY e" + std::to_string(i) + " '";
        for (int j = 0; j < 10; ++j) {
            document += inner;
        }
        document += "'>";
    }
    EXPECT_FALSE(Parse(document + "]><a b='&e8;'/>"));
}

TEST_F(XMLSerialize, CallbacksCheckTheirParameters)
{
    const char* attributes[] = {nullptr};
    CVQMXMLSerialize::OnStartElement(nullptr, "a", attributes);
    CVQMXMLSerialize::OnStartElement(&serializer, nullptr, attributes);
    CVQMXMLSerialize::OnStartElement(&serializer, "a", nullptr);
    CVQMXMLSerialize::OnEndElement(nullptr, "a");
    CVQMXMLSerialize::OnElementData(nullptr, "a", 1);
    CVQMXMLSerialize::OnElementData(&serializer, nullptr, 1);
    EXPECT_THAT(Take(), ElementsAre(kLog.Debug("OnStartElement", "OnStartElement - User Data is null \n"),
                                    kLog.Debug("OnStartElement", " Parameter is Null!!!!\n"),
                                    kLog.Debug("OnStartElement", " Parameter is Null!!!!\n"),
                                    kLog.Debug("OnEndElement", "OnEndElement - User Data is null \n"),
                                    kLog.Debug("OnElementData", "OnElementData - User Data is null \n"),
                                    kLog.Debug("OnElementData", "OnElementData - data is null \n")));
}

TEST_F(XMLSerialize, CallbacksKeepTheLastTarget)
{
    EXPECT_TRUE(Parse("<a/>"));
    Take();
    const char* attributes[] = {"x", "1", "x", "2", nullptr};
    CVQMXMLSerialize::OnStartElement(&serializer, "b", attributes);
    CVQMXMLSerialize::OnElementData(&serializer, "text and more", 4);
    CVQMXMLSerialize::OnEndElement(&serializer, nullptr);
    EXPECT_THAT(Take(), ElementsAre("step 0 name b attributes x 1 x 2", "step 2 text text", "step 1"));
    EXPECT_EQ(serializer.GetParsingStep(), PARSING_END_ELEMENT);
    target.throwAt = "step 1 name b";
    EXPECT_THROW(CVQMXMLSerialize::OnEndElement(&serializer, "b"), std::string);
    EXPECT_EQ(serializer.GetParsingElementName(), nullptr);
}

TEST_F(XMLSerialize, WritingProducesNothing)
{
    CVQMDataBufferObject buffer;
    EXPECT_FALSE(serializer.Serialize(&target, &buffer));
    EXPECT_EQ(buffer.GetData(), nullptr);
    EXPECT_THAT(Take(), IsEmpty());
}
