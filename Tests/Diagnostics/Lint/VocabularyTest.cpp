#include <gmock/gmock.h>

#include "Data/VQMScheduleContainer.h"
#include "Diagnostics/Lint/Vocabulary.h"
#include "Tests/Support/Recorder.h"

namespace {

/// What the library makes of `attribute` with `value`, when `before` unknown attributes precede it.
std::string LinesOf(const lint::ElementInfo& element, const std::string& attribute, int before)
{
    std::vector<std::string> names;
    names.reserve(static_cast<std::size_t>(before));
    for (int index = 0; index < before; ++index) {
        names.push_back("x" + std::to_string(index));
    }
    std::vector<const char*> list;
    for (const std::string& name : names) {
        list.insert(list.end(), {name.c_str(), ""});
    }
    list.insert(list.end(), {attribute.c_str(), "1", nullptr});
    recorder::Clear();
    CVQMScheduleContainer().OnStartElement(element.name.c_str(), list.data());
    std::string lines;
    for (const std::string& line : recorder::Take()) {
        lines += line;
    }
    return lines;
}

const lint::ElementInfo& InfoOf(const std::string& name)
{
    return lint::InfoOf(lint::ElementNamed(name));
}

TEST(LintVocabulary, HasTheElementsThatTheLibraryKnows)
{
    for (const std::string& name : lint::ElementNames()) {
        EXPECT_THAT(LinesOf(InfoOf(name), "x", 0), testing::Not(testing::HasSubstr("Unknown Element"))) << name;
    }
    const lint::ElementInfo other = {lint::Element::kUnknown, "other", 0, {}};
    EXPECT_THAT(LinesOf(other, "x", 0), testing::HasSubstr("Unknown Element"));
}

TEST(LintVocabulary, HasTheSlotsAndAttributesThatTheLibraryLooksAt)
{
    for (const std::string name : {"policy", "project", "schedule", "item", "rech_info"}) {
        const lint::ElementInfo& element = InfoOf(name);
        const std::string odd = LinesOf(element, "other", element.slots - 1);
        for (const lint::AttributeInfo& attribute : element.attributes) {
            EXPECT_NE(LinesOf(element, attribute.name, element.slots - 1), odd) << name << ' ' << attribute.name;
            EXPECT_EQ(LinesOf(element, attribute.name, element.slots), LinesOf(element, "other", element.slots))
                << name << ' ' << attribute.name;
        }
    }
}

TEST(LintVocabulary, HasTheOneSlotOfTheState)
{
    const auto isError = [](std::vector<const char*> attributes) {
        CVQMScheduleContainer container;
        container.OnStartElement("rsp", attributes.data());
        _VQMPolicy policy;
        container.GetSturcture(&policy);
        return policy.bError;
    };
    EXPECT_EQ(InfoOf("rsp").slots, 1);
    EXPECT_FALSE(isError({"state", "ok", nullptr}));
    EXPECT_TRUE(isError({"x", "", "state", "ok", nullptr}));
}

} // namespace
