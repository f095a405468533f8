#pragma once

#include <string>

#include "Diagnostics/Readiness/FileTree.h"
#include "Diagnostics/Readiness/Readiness.h"

namespace readiness {

/// Examines the files that `policy` names, each once, in `directory`, a directory of `tree` with "/" at its end.
Contents ExamineContents(const _VQMPolicy& policy, const FileTree& tree, const std::string& directory,
                         const Progress& progress);

} // namespace readiness
