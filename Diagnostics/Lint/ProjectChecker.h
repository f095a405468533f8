#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "Common/VQMDataObject.h"
#include "Diagnostics/Lint/AttributeChecker.h"
#include "Diagnostics/Lint/Reporter.h"
#include "Diagnostics/Lint/StartTag.h"

namespace lint {

/// Compares what a project announces with the items of the document.
class ProjectChecker {
public:
    explicit ProjectChecker(Reporter& reporter) : reporter_(reporter) {}

    /// `values` are the judgements of the tag's attributes.
    void Begin(const StartTag& project, const std::vector<Judgement>& values);
    /// `sizeIsSure`: the size is what the item's author meant.
    void AddItem(uVQMINT64 size, bool sizeIsSure);

    /// At the document's end. `isWhole`: nothing follows that the TV does not read.
    void Finish(bool isWhole);

private:
    struct Announced {
        uVQMINT64 value = 0;
        Range place;
    };

    bool ItemsAreSure() const;

    Reporter& reporter_;
    std::optional<Announced> count_;
    std::optional<Announced> size_;
    uVQMINT64 items_ = 0;
    uVQMINT64 total_ = 0;
    bool overflow_ = false;
    bool sizesAreSure_ = true;
};

} // namespace lint
