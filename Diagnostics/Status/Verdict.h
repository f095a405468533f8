#pragma once

#include <string>
#include <vector>

#include "Diagnostics/Status/Report.h"

namespace status {

/// Something that keeps the TV from launching the companion, or from playing.
struct Reason {
    std::string id;   ///< a stable name, such as "setting-off"
    std::string text; ///< for a person, one clause; quotes names and so needs escaping
};

/// All that stands in the way, in the order in which one would look into it. Empty: nothing does.
/// What cannot be told stands in the way as well.
std::vector<Reason> ReasonsAgainst(const Report& report);

} // namespace status
