#pragma once

#include <functional>
#include <string>

#include <gmock/gmock.h>

#include "Tests/Support/Recorder.h"
#include "Tests/VQMSerialize/EmptyText.h"
#include "Tests/VQMSerialize/ParserFault.h"
#include "VQMSerialize/VQMXMLSerialize.h"

/// Records the steps it is given: "step 0 name a attributes x 1", "step 2 text y", "step 1 name a".
class StepTarget : public CVQMDataSerializableObject {
public:
    void GetSturcture(void* /*pStructure*/) override {}
    void SetStructure(void* /*pStructure*/) override {}
    bool WriteTo(IVQMSerialize* /*pSerialize*/) override { return false; }

    bool ReadFrom(IVQMSerialize* pSerialize) override
    {
        const std::string line = Describe(dynamic_cast<CVQMXMLSerialize&>(*pSerialize));
        recorder::Record(line);
        if (onStep) {
            onStep(line);
        }
        return false; // nobody looks
    }

    /// Run with each step's line; may throw.
    std::function<void(const std::string&)> onStep;
    /// All pieces in a row.
    std::string text;

private:
    std::string Describe(CVQMXMLSerialize& source)
    {
        std::string line = "step " + std::to_string(source.GetParsingStep());
        if (source.GetParsingElementName() != nullptr) {
            line += std::string(" name ") + source.GetParsingElementName();
        }
        if (const char** attribute = source.GetParsingAttributes()) {
            for (line += " attributes"; *attribute != nullptr; ++attribute) {
                line += std::string(" ") + *attribute;
            }
        }
        if (source.GetParsingText() != nullptr) {
            line += std::string(" text ") + source.GetParsingText();
            text += source.GetParsingText();
        }
        return line;
    }
};

/// Tells when it is destroyed through the virtual operation, and shows its fields.
class OpenSerializer : public CVQMXMLSerialize {
public:
    void Destroy() override
    {
        recorder::Record("Destroy");
        CVQMXMLSerialize::Destroy();
    }

    using CVQMXMLSerialize::m_nParsingStep;
    using CVQMXMLSerialize::m_pElementName;
    using CVQMXMLSerialize::m_pParser;
    using CVQMXMLSerialize::m_ppAttributes;
    using CVQMXMLSerialize::m_pTarget;
    using CVQMXMLSerialize::m_pText;
};

class XMLSerialize : public testing::Test {
protected:
    XMLSerialize()
    {
        recorder::Clear();
        parser_fault::faults().recordBuffer = true;
    }
    ~XMLSerialize() override { parser_fault::faults() = {}; }

    /// A whole document's life.
    bool Parse(const std::string& document)
    {
        EXPECT_TRUE(serializer.Create());
        const bool result = serializer.Deserialize(document.c_str(), &target);
        ExpectNoParser();
        return result;
    }

    void ExpectNoParser()
    {
        EXPECT_EQ(serializer.m_pParser, nullptr);
        EXPECT_EQ(parser_fault::BlocksInUse(), 0U);
    }

    static std::string Line(const std::string& function, const std::string& message)
    {
        return recorder::LogOf("Quillmere", "VQMXMLSerialize.cpp").Debug(function, message);
    }

    OpenSerializer serializer;
    StepTarget target;

    const std::string kEnd = Line("Deserialize", "ParseHttpResponse End !!!!\n");
    const std::string kParseError = Line("Deserialize", kParseErrorMessage);
    const std::string kNoBuffer = Line("Deserialize", kNoBufferMessage);
};
