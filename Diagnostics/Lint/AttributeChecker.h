#pragma once

#include <string>

#include "Diagnostics/Lint/Reporter.h"
#include "Diagnostics/Lint/StartTag.h"
#include "Diagnostics/Lint/TimeRules.h"

namespace lint {

/// Checks what a start tag carries: names, places and, one by one, values.
class AttributeChecker {
public:
    AttributeChecker(Reporter& reporter, const schedule::Day& today) : reporter_(reporter), today_(today) {}

    void Check(const StartTag& tag);

    /// Reports a name that the vocabulary does not have: misspelt, where one is close.
    static Problem UnknownName(const std::string& what, std::string_view name, const std::vector<std::string>& known,
                               Rule unknown, Rule misspelt);

private:
    void CheckUnknown(const StartTag& tag, std::size_t index);
    void CheckValue(const StartTag& tag, std::size_t index, const AttributeInfo& info);
    void CheckMissing(const StartTag& tag);

    Reporter& reporter_;
    schedule::Day today_;
    std::vector<std::string> meant_; ///< the names that misspelt ones of the tag may stand for
};

} // namespace lint
