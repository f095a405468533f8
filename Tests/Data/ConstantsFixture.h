#pragma once

#include <map>
#include <string>

#include <gmock/gmock.h>

#include "Data/VQMDataConstants.h"
#include "Tests/Data/OpenConstants.h"
#include "Tests/Support/Recorder.h"
#include "VQMSerialize/VQMXMLSerialize.h"

/// Begins and ends without any constant.
class ConstantsTest : public testing::Test {
protected:
    using Cache = std::map<std::string, std::string>;

    ConstantsTest()
    {
        OpenConstants::m_DataCache.clear();
        recorder::Clear();
    }
    ~ConstantsTest() override { OpenConstants::m_DataCache.clear(); }

    static bool Parse(const std::string& document)
    {
        CVQMDataConstants constants;
        CVQMXMLSerialize serializer;
        return serializer.Create() && serializer.Deserialize(document.c_str(), &constants);
    }

    static std::string Line(const std::string& function, const std::string& message)
    {
        return recorder::LogOf("Quillmere", "VQMDataConstants.cpp").Debug(function, message);
    }
    static std::string ParserLine(const std::string& message)
    {
        return recorder::LogOf("Quillmere", "VQMXMLSerialize.cpp").Debug("Deserialize", message);
    }
};
