#pragma once

#include <array>
#include <cstddef>
#include <string_view>
#include <utility>

/// The schedule document's elements and attributes in one table. The parser reads by it and the
/// linter checks by it, so that they cannot disagree. Docs/schedule-format.md describes the document.
namespace VQMScheduleFormat {

enum class Element { kUnknown, kRsp, kPolicy, kProject, kSchedule, kItem, kName, kSize, kFormat, kRechInfo };

inline constexpr std::size_t kElementCount = 10;

/// The attributes by name. "id" is the same one wherever it stands.
enum class Attribute {
    kUnknown,
    kState,
    kPeriod,
    kId,
    kVersion,
    kItemCount,
    kTotalSize,
    kExpiration,
    kStartTime,
    kEndTime,
    kOrder,
    kIsMaster,
    kNumOfPlayer,
    kIPAddrOfMaster,
    kIPType,
    kIPAddr,
    kSubnetMask,
    kGateway,
    kTypeOfNetwork,
    kWirelessGroupName,
    kImageDuration,
};

/// What a value stands for.
enum class ValueKind { kText, kState, kInteger, kCount, kMaster, kUnsigned, kTime, kDate, kAddress, kSubnetMask };

struct AttributeInfo {
    Attribute attribute = Attribute::kUnknown;
    std::string_view name{};
    ValueKind kind = ValueKind::kText;
};

/// The attributes of one element, for a range-based for.
class AttributeList {
public:
    constexpr AttributeList() = default;
    template <std::size_t count>
    constexpr explicit AttributeList(const AttributeInfo (&list)[count]) : first_(list), count_(count)
    {
    }

    constexpr const AttributeInfo* begin() const { return first_; }
    constexpr const AttributeInfo* end() const { return first_ + count_; }
    constexpr std::size_t size() const { return count_; }
    constexpr const AttributeInfo& operator[](std::size_t index) const { return first_[index]; }

private:
    const AttributeInfo* first_ = nullptr;
    std::size_t count_ = 0;
};

struct ElementInfo {
    Element element = Element::kUnknown;
    std::string_view name{};
    int slots = 0; ///< how many attributes the parser looks at, from the first one on
    AttributeList attributes{};
};

inline constexpr AttributeInfo kRspAttributes[] = {{Attribute::kState, "state", ValueKind::kState}};

inline constexpr AttributeInfo kPolicyAttributes[] = {{Attribute::kPeriod, "period", ValueKind::kCount}};

inline constexpr AttributeInfo kProjectAttributes[] = {{Attribute::kId, "id", ValueKind::kUnsigned},
                                                       {Attribute::kVersion, "version", ValueKind::kText},
                                                       {Attribute::kItemCount, "item_count", ValueKind::kCount},
                                                       {Attribute::kTotalSize, "total_size", ValueKind::kUnsigned},
                                                       {Attribute::kExpiration, "expiration", ValueKind::kDate}};

inline constexpr AttributeInfo kScheduleAttributes[] = {{Attribute::kStartTime, "start_time", ValueKind::kTime},
                                                        {Attribute::kEndTime, "end_time", ValueKind::kTime}};

inline constexpr AttributeInfo kItemAttributes[] = {{Attribute::kId, "id", ValueKind::kText},
                                                    {Attribute::kOrder, "order", ValueKind::kCount}};

inline constexpr AttributeInfo kRechInfoAttributes[] = {
    {Attribute::kIsMaster, "IsMaster", ValueKind::kMaster},
    {Attribute::kNumOfPlayer, "NumOfPlayer", ValueKind::kCount},
    {Attribute::kIPAddrOfMaster, "IPAddrOfMaster", ValueKind::kAddress},
    {Attribute::kIPType, "IPType", ValueKind::kInteger},
    {Attribute::kIPAddr, "IPAddr", ValueKind::kAddress},
    {Attribute::kSubnetMask, "SubnetMask", ValueKind::kSubnetMask},
    {Attribute::kGateway, "Gateway", ValueKind::kAddress},
    {Attribute::kTypeOfNetwork, "TypeOfNetwork", ValueKind::kInteger},
    {Attribute::kWirelessGroupName, "WirelessGroupName", ValueKind::kText},
    {Attribute::kImageDuration, "nImageDuration", ValueKind::kCount}};

/// In the order of the enumeration; the unknown element has no name.
inline constexpr std::array<ElementInfo, kElementCount> kElements = {{
    {},
    {Element::kRsp, "rsp", 1, AttributeList(kRspAttributes)},
    {Element::kPolicy, "policy", 5, AttributeList(kPolicyAttributes)},
    {Element::kProject, "project", 5, AttributeList(kProjectAttributes)},
    {Element::kSchedule, "schedule", 2, AttributeList(kScheduleAttributes)},
    {Element::kItem, "item", 2, AttributeList(kItemAttributes)},
    {Element::kName, "name", 0, {}},
    {Element::kSize, "size", 0, {}},
    {Element::kFormat, "format", 0, {}},
    {Element::kRechInfo, "rech_info", 10, AttributeList(kRechInfoAttributes)},
}};

constexpr const ElementInfo& InfoOf(Element element)
{
    return kElements[static_cast<std::size_t>(element)];
}

namespace detail {

// Folds instead of loops: the compiler then compares with constants, which a loop over the table
// does not let it do. Every tag of a document comes by here.

template <std::size_t index>
constexpr bool IsElement(std::string_view name, Element& found)
{
    constexpr ElementInfo kInfo = kElements[index];
    if (name != kInfo.name) {
        return false;
    }
    found = kInfo.element;
    return true;
}

/// From the table's end, where the elements of an item stand: most tags are theirs.
template <std::size_t... indices>
[[gnu::always_inline]] constexpr Element FindElement(std::string_view name,
                                                     std::index_sequence<indices...> /*sequence*/)
{
    Element found = Element::kUnknown;
    static_cast<void>((IsElement<kElementCount - 1 - indices>(name, found) || ...));
    return found;
}

template <Element element, std::size_t index>
constexpr bool IsAttribute(std::string_view name, Attribute& found)
{
    constexpr AttributeInfo kInfo = InfoOf(element).attributes[index];
    if (name != kInfo.name) {
        return false;
    }
    found = kInfo.attribute;
    return true;
}

template <Element element, std::size_t... indices>
constexpr Attribute FindAttribute(std::string_view name, std::index_sequence<indices...> /*sequence*/)
{
    Attribute found = Attribute::kUnknown;
    static_cast<void>((IsAttribute<element, indices>(name, found) || ...));
    return found;
}

} // namespace detail

/// Unknown names give `Element::kUnknown`.
[[gnu::always_inline]] constexpr Element ElementNamed(std::string_view name)
{
    return detail::FindElement(name, std::make_index_sequence<kElementCount - 1>());
}

/// The attribute of `element` with this name. Names that the element does not have give
/// `Attribute::kUnknown`.
template <Element element>
constexpr Attribute AttributeNamed(std::string_view name)
{
    return detail::FindAttribute<element>(name, std::make_index_sequence<InfoOf(element).attributes.size()>());
}

} // namespace VQMScheduleFormat
