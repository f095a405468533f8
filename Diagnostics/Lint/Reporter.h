#pragma once

#include <bitset>
#include <cstdint>
#include <optional>
#include <string>

#include "Diagnostics/Lint/DocumentWindow.h"
#include "Diagnostics/Lint/FindingList.h"
#include "Diagnostics/Lint/Problem.h"

namespace lint {

/// A stretch of the document that findings can be about.
struct Range {
    Position position;
    std::uint64_t size = 0;          ///< bytes
    std::optional<Snippet> source{}; ///< taken along where the stretch may be gone when it is needed
    /// Its bytes, where replacing them replaces what the range is about and nothing else.
    std::optional<std::string> bytes{};
};

/// Turns problems into findings with their places.
class Reporter {
public:
    Reporter(DocumentWindow& window, FindingList& findings) : window_(window), findings_(findings) {}

    DocumentWindow& Window() { return window_; }

    /// `range` with its source line, for later.
    Range Kept(Range range) const;

    void Report(const Range& range, Problem problem);

    /// Whether something was reported by this rule, be it ignored.
    bool HasReported(Rule rule) const { return reported_.test(static_cast<std::size_t>(rule)); }

private:
    DocumentWindow& window_;
    FindingList& findings_;
    std::bitset<static_cast<std::size_t>(Rule::kCount)> reported_;
};

} // namespace lint
