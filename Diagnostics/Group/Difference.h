#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Diagnostics/Text/Diagnostic.h"

namespace group {

/// Two places that do not fit together.
struct Difference {
    Diagnostic here;                 ///< what is wrong
    std::optional<Diagnostic> there; ///< what it is held against, as a note; none where no place stands for that
    std::size_t document = 0;        ///< the number of the document that `here` is in, from 0
};

/// What a difference says.
struct Finding {
    const char* id;
    std::string message;
    std::string there; ///< about the other place
    std::string expected;
    Severity severity = Severity::kError;
};

/// Collects differences; from a limit on it only counts.
class DifferenceList {
public:
    static constexpr std::size_t kMost = 1000;

    /// Whether another one is kept: if not, its places need not be looked up.
    bool IsFull() const { return differences_.size() >= kMost; }

    /// `here` and `there` come without words.
    void Add(std::size_t document, Diagnostic here, std::optional<Diagnostic> there, Finding finding);
    void Count() { ++notKept_; }

    /// Adds all of another list, beyond the limit if need be.
    void Take(DifferenceList&& other);

    std::uint64_t NotKept() const { return notKept_; }

    /// By document, then by place.
    std::vector<Difference> TakeSorted();

private:
    std::vector<Difference> differences_;
    std::uint64_t notKept_ = 0;
};

} // namespace group
