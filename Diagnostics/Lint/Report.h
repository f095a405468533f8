#pragma once

#include <cstdint>
#include <vector>

#include "Diagnostics/Lint/Rule.h"
#include "Diagnostics/Text/Diagnostic.h"

namespace lint {

struct Counts {
    std::uint64_t errors = 0;
    std::uint64_t warnings = 0;
    std::uint64_t notes = 0;
};

/// What mends a finding.
struct Fix {
    Rule rule;
    Edit edit;
};

/// All that is known of one document.
struct Report {
    std::vector<Diagnostic> findings; ///< sorted by position, then rule; each has a line
    Counts counts;                    ///< of everything found, kept or not
    std::uint64_t notKept = 0;        ///< how many findings are counted only
    std::vector<Fix> fixes{};         ///< of all findings that can be mended, kept or not; not sorted
};

} // namespace lint
