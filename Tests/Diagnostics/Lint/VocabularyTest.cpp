#include <algorithm>

#include <gmock/gmock.h>

#include "Data/VQMScheduleContainer.h"
#include "Diagnostics/Lint/Vocabulary.h"
#include "Tests/Support/Recorder.h"

namespace {

/// What the library makes of `attribute` with `value`, when `before` unknown attributes precede it.
std::string LinesOf(const std::string& element, const std::string& attribute, int before)
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
    CVQMScheduleContainer().OnStartElement(element.c_str(), list.data());
    std::string lines;
    for (const std::string& line : recorder::Take()) {
        lines += line;
    }
    return lines;
}

bool LibraryReads(const std::string& element)
{
    return LinesOf(element, "x", 0).find("Unknown Element") == std::string::npos;
}

/// Whether the library reads the attribute in this slot, counted from 0.
bool LibraryReads(const std::string& element, const std::string& attribute, int slot)
{
    return LinesOf(element, attribute, slot) != LinesOf(element, "other", slot);
}

/// Every name of the format, and names that are almost one.
std::vector<std::string> Names()
{
    std::vector<std::string> names = {"", "other", "Rsp", "ITEM", "names", "siz", "Id", "ismaster", "ImageDuration"};
    for (const std::string& element : lint::ElementNames()) {
        names.push_back(element);
        for (const std::string& attribute : lint::AttributeNames(lint::InfoOf(lint::ElementNamed(element)))) {
            names.push_back(attribute);
        }
    }
    return names;
}

TEST(LintVocabulary, AnElementIsKnownExactlyWhenTheLibraryReadsIt)
{
    for (const std::string& name : Names()) {
        EXPECT_EQ(lint::ElementNamed(name) != lint::Element::kUnknown, LibraryReads(name)) << name;
    }
}

TEST(LintVocabulary, AnAttributeIsKnownExactlyWhenTheLibraryReadsItInTheLastSlotAndNotBeyond)
{
    for (const std::string name : {"policy", "project", "schedule", "item", "name", "size", "format", "rech_info"}) {
        const lint::ElementInfo& element = lint::InfoOf(lint::ElementNamed(name));
        for (const std::string& attribute : Names()) {
            const bool known = lint::FindAttribute(element, attribute) != nullptr;
            const int last = std::max(element.slots - 1, 0);
            EXPECT_EQ(LibraryReads(name, attribute, last), known) << name << ' ' << attribute;
            EXPECT_FALSE(LibraryReads(name, attribute, element.slots)) << name << ' ' << attribute;
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
    EXPECT_EQ(lint::InfoOf(lint::Element::kRsp).slots, 1);
    EXPECT_FALSE(isError({"state", "ok", nullptr}));
    EXPECT_TRUE(isError({"x", "", "state", "ok", nullptr}));
}

TEST(LintVocabulary, StandsInTheOrderOfItsEnumeration)
{
    for (std::size_t index = 0; index < VQMScheduleFormat::kElementCount; ++index) {
        EXPECT_EQ(VQMScheduleFormat::kElements[index].element, static_cast<lint::Element>(index));
    }
}

} // namespace
