#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Diagnostics/Lint/Reporter.h"
#include "Diagnostics/Lint/StartTag.h"
#include "Diagnostics/Lint/TimeRules.h"

namespace lint {

/// What is known of an attribute's value once it was checked, for checks that compare values.
struct Judgement {
    bool isFlawless = false;      ///< nothing was reported about it
    bool isReadAsWritten = false; ///< of a number: the TV reads the one that stands there
    std::optional<int> seconds{}; ///< of a time: from midnight, where what is written leaves no doubt
};

/// Checks what a start tag carries: names, places and, one by one, values.
class AttributeChecker {
public:
    AttributeChecker(Reporter& reporter, const schedule::Day& today) : reporter_(reporter), today_(today) {}

    /// Checks the tag. Gives a judgement for each of its attributes, good until the next check.
    const std::vector<Judgement>& Check(const StartTag& tag);

    /// What is wrong with a name that the vocabulary does not have: `close` are the names in `known` that it
    /// may have been meant for, and with one of them it is misspelt.
    static Problem UnknownName(const std::string& what, std::string_view name, const std::vector<std::string>& known,
                               const std::vector<std::string>& close, Rule unknown, Rule misspelt);

private:
    void CheckUnknown(const StartTag& tag, std::size_t index);
    void CheckValue(const StartTag& tag, std::size_t index, const AttributeInfo& info);
    void CheckMissing(const StartTag& tag);

    Reporter& reporter_;
    schedule::Day today_;
    std::vector<Judgement> judgements_;
    /// Names that were reported as misspelt or out of place: they are not missing as well.
    std::vector<std::string> meant_;
};

} // namespace lint
