#pragma once

#include <string>
#include <vector>

#include "Diagnostics/Lint/Lint.h"
#include "Tools/ExitCode.h"

/// Prints what mends the documents, as diffs, and makes the changes when `write` is set. A file that cannot be
/// read or replaced stops no other. With `strict`, notes that remain count as findings.
ExitCode FixDocuments(const std::vector<std::string>& names, const lint::Options& options, bool write, bool strict);
