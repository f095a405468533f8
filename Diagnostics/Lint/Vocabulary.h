#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Data/VQMScheduleFormat.h"

namespace lint {

using VQMScheduleFormat::AttributeInfo;
using VQMScheduleFormat::Element;
using VQMScheduleFormat::ElementInfo;
using VQMScheduleFormat::ElementNamed;
using VQMScheduleFormat::InfoOf;
using VQMScheduleFormat::ValueKind;

/// The element's name; empty for the unknown one.
std::string NameOf(Element element);

/// Null for a name that the element does not have.
const AttributeInfo* FindAttribute(const ElementInfo& element, std::string_view name);

// For suggestions and messages.

std::vector<std::string> ElementNames();
std::vector<std::string> AttributeNames(const ElementInfo& element);

} // namespace lint
