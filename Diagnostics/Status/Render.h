#pragma once

#include <string>
#include <vector>

#include "Diagnostics/Status/Report.h"
#include "Diagnostics/Status/Verdict.h"
#include "Diagnostics/Text/Style.h"

namespace status {

/// One screen of text, fit for a terminal. Its last line is the sentence of the verdict.
std::string Render(const Report& report, const Verdict& verdict, const Style& style = Style());

/// One document of Docs/schemas/status.schema.json.
std::string RenderJson(const Report& report, const Verdict& verdict);

} // namespace status
