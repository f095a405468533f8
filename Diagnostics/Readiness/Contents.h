#pragma once

#include <string>

#include "Diagnostics/Readiness/Readiness.h"

namespace readiness {

/// Examines the file of each item of `policy` in `directory`, which has "/" at its end.
Contents ExamineContents(const _VQMPolicy& policy, const std::string& directory, const Progress& progress);

} // namespace readiness
