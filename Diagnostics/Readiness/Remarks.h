#pragma once

#include <string>
#include <vector>

#include "Diagnostics/Readiness/Readiness.h"

namespace readiness {

/// One thing that a technician should know.
struct Remark {
    bool blocking = false; ///< it keeps the TV from being ready; otherwise it is worth knowing
    std::string rule;      ///< a stable name: "file-missing"
    std::string message;   ///< plain words; quotes names, and so needs escaping
    std::string path{};    ///< the file or directory it is about
};

/// What the report means, in the order in which the TV comes across it.
std::vector<Remark> Explain(const Report& report);

} // namespace readiness
