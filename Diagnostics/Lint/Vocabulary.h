#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace lint {

enum class Element { kUnknown, kRsp, kPolicy, kProject, kSchedule, kItem, kName, kSize, kFormat, kRechInfo };

/// How the TV reads an attribute's value.
enum class ValueKind { kText, kState, kInteger, kCount, kMaster, kUnsigned, kTime, kDate, kAddress, kSubnetMask };

struct AttributeInfo {
    std::string name;
    ValueKind kind;
};

/// What an element of a schedule document may carry.
struct ElementInfo {
    Element element;
    std::string name;
    int slots; ///< how many attributes the TV looks at, from the first one on
    std::vector<AttributeInfo> attributes;
};

/// Unknown names give `Element::kUnknown`.
Element ElementNamed(std::string_view name);

const ElementInfo& InfoOf(Element element);

/// Null for a name that the element does not have.
const AttributeInfo* FindAttribute(const ElementInfo& element, std::string_view name);

std::vector<std::string> ElementNames();
std::vector<std::string> AttributeNames(const ElementInfo& element);

} // namespace lint
