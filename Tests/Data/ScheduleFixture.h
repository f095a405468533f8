#pragma once

#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "Data/VQMScheduleContainer.h"
#include "Tests/Support/Recorder.h"
#include "Tests/VQMSerialize/EventSource.h"

/// "year-month-day hour:minute:second spare".
std::string Text(const _VQMTime& time);

/// What sets a policy apart from an empty one, field by field in their order: "IPType=3", and for
/// each schedule "schedule <start> to <end>" and its "item id|name|size|format|order" lines.
recorder::Lines Changes(const _VQMPolicy& policy);

/// One log line of the container, as it is recorded.
std::string ScheduleLine(const std::string& function, const std::string& message);

/// Several of them, of one function.
recorder::Lines ScheduleLines(const std::string& function, const std::vector<std::string>& messages);

constexpr char kMissingAttribute[] = "pAttribute or pValue is wrong";

class ScheduleTest : public testing::Test {
protected:
    using Attributes = std::vector<const char*>;

    ScheduleTest() { recorder::Clear(); }

    // Events, as a serializer delivers them. The end of the attribute list is added.

    void Start(const char* name, Attributes attributes = {})
    {
        attributes.push_back(nullptr);
        attributes.shrink_to_fit(); // a read past the end is one past the memory
        StartWithList(name, attributes);
    }
    void StartWithList(const char* name, Attributes attributes)
    {
        EventSource source(PARSING_START_ELEMENT, name, attributes.data(), nullptr);
        EXPECT_TRUE(container.ReadFrom(&source));
    }
    void End(const char* name)
    {
        EventSource source(PARSING_END_ELEMENT, name, nullptr, nullptr);
        EXPECT_TRUE(container.ReadFrom(&source));
    }
    void Piece(const std::string& text)
    {
        EventSource source(PARSING_ELEMENT_DATA, nullptr, nullptr, text.c_str());
        EXPECT_TRUE(container.ReadFrom(&source));
    }

    bool Parse(const std::string& document)
    {
        CVQMXMLSerialize serializer;
        return serializer.Create() && serializer.Deserialize(document.c_str(), &container);
    }

    _VQMPolicy Policy()
    {
        _VQMPolicy policy;
        container.GetSturcture(&policy);
        return policy;
    }

    /// The last line of `Changes`: the last item, if there is one.
    std::string LastChange()
    {
        const recorder::Lines changes = Changes(Policy());
        return changes.empty() ? "" : changes.back();
    }

    CVQMScheduleContainer container;
};
