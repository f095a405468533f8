#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "Diagnostics/Lint/AttributeChecker.h"
#include "Diagnostics/Lint/ItemChecker.h"
#include "Diagnostics/Lint/PeriodOverlaps.h"
#include "Diagnostics/Lint/Reporter.h"
#include "Diagnostics/Lint/SeenTexts.h"
#include "Diagnostics/Lint/StartTag.h"

namespace lint {

/// Checks one schedule after the other: its times, and its items against each other.
class PeriodChecker {
public:
    explicit PeriodChecker(Reporter& reporter) : reporter_(reporter) {}

    // `values` are the judgements of the tag's attributes.

    void Begin(const StartTag& schedule, const std::vector<Judgement>& values);
    void BeginItem(const StartTag& item, const std::vector<Judgement>& values);

    void EndItem(const ItemFacts& item);
    void End();

private:
    void CheckTimes(const StartTag& schedule, const std::vector<Judgement>& values);
    void ForgetItems();

    Reporter& reporter_;
    PeriodOverlaps overlaps_;
    Range schedule_;
    std::uint64_t items_ = 0;
    // Where the open period has it first, by line.
    SeenTexts ids_;
    SeenNumbers orders_;
    SeenTexts files_;
};

} // namespace lint
