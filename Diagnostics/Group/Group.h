#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Diagnostics/Group/Difference.h"

/// The documents of several TVs that are to play the same in sync.
namespace group {

struct Report {
    std::vector<std::string> documents;  ///< their names, in the order given
    std::vector<Difference> differences; ///< by document, then by place
    std::uint64_t notKept = 0;           ///< how many are counted only
};

/// Holds documents against the first of them, and the facts about their network against each other.
///
/// At most two documents are in memory at once. Throws what reading one of them throws, see
/// `schedule::ReadPolicyFile`. `paths` has at least two.
Report Compare(const std::vector<std::string>& paths);

} // namespace group
