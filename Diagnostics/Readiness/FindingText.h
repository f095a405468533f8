#pragma once

#include <string_view>
#include <vector>

namespace readiness {

/// What the documentation says about a finding of the check.
struct FindingText {
    std::string_view id;
    std::string_view meaning; ///< a clause, with the marks of Markdown
    std::string_view advice;  ///< what to do; the same
};

/// In the order of the documentation.
const std::vector<FindingText>& FindingTexts();

} // namespace readiness
