#pragma once

#include <vector>

#include "Diagnostics/Status/Report.h"
#include "Diagnostics/Text/Diagnostic.h"

namespace status {

/// All that stands in the way, in the order in which one would look into it. Empty: nothing does.
/// What cannot be told stands in the way as well.
std::vector<Diagnostic> ReasonsAgainst(const Report& report);

} // namespace status
