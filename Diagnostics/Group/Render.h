#pragma once

#include <string>

#include "Diagnostics/Group/Group.h"

namespace group {

/// "file:line:column: severity: message [id]" with the source line for each difference, and the same for the
/// place that it is held against. Texts are escaped for a terminal.
std::string Render(const Report& report);

/// A document of Docs/schemas/schedule-group.schema.json.
std::string RenderJson(const Report& report);

} // namespace group
