#include "Diagnostics/Lint/Vocabulary.h"

namespace lint {

std::string NameOf(Element element)
{
    return std::string(InfoOf(element).name);
}

const AttributeInfo* FindAttribute(const ElementInfo& element, std::string_view name)
{
    for (const AttributeInfo& attribute : element.attributes) {
        if (name == attribute.name) {
            return &attribute;
        }
    }
    return nullptr;
}

std::vector<std::string> ElementNames()
{
    std::vector<std::string> names;
    for (const ElementInfo& info : VQMScheduleFormat::kElements) {
        if (info.element != Element::kUnknown) {
            names.emplace_back(info.name);
        }
    }
    return names;
}

std::vector<std::string> AttributeNames(const ElementInfo& element)
{
    std::vector<std::string> names;
    for (const AttributeInfo& attribute : element.attributes) {
        names.emplace_back(attribute.name);
    }
    return names;
}

} // namespace lint
