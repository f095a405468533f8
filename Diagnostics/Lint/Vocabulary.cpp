#include "Diagnostics/Lint/Vocabulary.h"

namespace lint {

namespace {

/// In the order of the enumeration.
const std::vector<ElementInfo>& Elements()
{
    static const std::vector<ElementInfo> elements = {
        {Element::kUnknown, "", 0, {}},
        {Element::kRsp, "rsp", 1, {{"state", ValueKind::kState}}},
        {Element::kPolicy, "policy", 5, {{"period", ValueKind::kCount}}},
        {Element::kProject,
         "project",
         5,
         {{"id", ValueKind::kUnsigned},
          {"version", ValueKind::kText},
          {"item_count", ValueKind::kCount},
          {"total_size", ValueKind::kUnsigned},
          {"expiration", ValueKind::kDate}}},
        {Element::kSchedule, "schedule", 2, {{"start_time", ValueKind::kTime}, {"end_time", ValueKind::kTime}}},
        {Element::kItem, "item", 2, {{"id", ValueKind::kText}, {"order", ValueKind::kCount}}},
        {Element::kName, "name", 0, {}},
        {Element::kSize, "size", 0, {}},
        {Element::kFormat, "format", 0, {}},
        {Element::kRechInfo,
         "rech_info",
         10,
         {{"IsMaster", ValueKind::kMaster},
          {"NumOfPlayer", ValueKind::kCount},
          {"IPAddrOfMaster", ValueKind::kAddress},
          {"IPType", ValueKind::kInteger},
          {"IPAddr", ValueKind::kAddress},
          {"SubnetMask", ValueKind::kSubnetMask},
          {"Gateway", ValueKind::kAddress},
          {"TypeOfNetwork", ValueKind::kInteger},
          {"WirelessGroupName", ValueKind::kText},
          {"nImageDuration", ValueKind::kCount}}},
    };
    return elements;
}

} // namespace

Element ElementNamed(std::string_view name)
{
    for (const ElementInfo& info : Elements()) {
        if (name == info.name) {
            return info.element;
        }
    }
    return Element::kUnknown;
}

const ElementInfo& InfoOf(Element element)
{
    return Elements()[static_cast<std::size_t>(element)];
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
    for (const ElementInfo& info : Elements()) {
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
