#pragma once

#include <cstdint>
#include <optional>

#include "Diagnostics/Lint/DocumentWindow.h"
#include "Diagnostics/Lint/FindingList.h"
#include "Diagnostics/Lint/Problem.h"

namespace lint {

/// A stretch of the document that findings can be about.
struct Spot {
    Mark mark;
    std::uint64_t size = 0;          ///< bytes
    std::optional<Excerpt> source{}; ///< taken along where the stretch may be gone when it is needed
};

/// Turns problems into findings with their places.
class Reporter {
public:
    Reporter(DocumentWindow& window, FindingList& findings) : window_(window), findings_(findings) {}

    DocumentWindow& Window() { return window_; }

    /// `spot` with its source line, for later.
    Spot Kept(Spot spot) const;

    void Report(const Spot& spot, Problem problem);

private:
    DocumentWindow& window_;
    FindingList& findings_;
};

} // namespace lint
