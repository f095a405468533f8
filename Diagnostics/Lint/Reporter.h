#pragma once

#include <cstdint>
#include <optional>

#include "Diagnostics/Lint/DocumentWindow.h"
#include "Diagnostics/Lint/FindingList.h"
#include "Diagnostics/Lint/Problem.h"

namespace lint {

/// A stretch of the document that findings can be about.
struct Range {
    Position position;
    std::uint64_t size = 0;          ///< bytes
    std::optional<Snippet> source{}; ///< taken along where the stretch may be gone when it is needed
};

/// Turns problems into findings with their places.
class Reporter {
public:
    Reporter(DocumentWindow& window, FindingList& findings) : window_(window), findings_(findings) {}

    DocumentWindow& Window() { return window_; }

    /// `range` with its source line, for later.
    Range Kept(Range range) const;

    void Report(const Range& range, Problem problem);

private:
    DocumentWindow& window_;
    FindingList& findings_;
};

} // namespace lint
