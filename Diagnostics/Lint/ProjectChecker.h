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
    void AddItem(uVQMINT64 size);

    /// At the document's end.
    void Finish();

private:
    struct Announced {
        uVQMINT64 value = 0;
        Range place;
    };

    Reporter& reporter_;
    std::optional<Announced> count_;
    std::optional<Announced> size_;
    uVQMINT64 items_ = 0;
    uVQMINT64 total_ = 0;
    bool overflow_ = false;
};

} // namespace lint
