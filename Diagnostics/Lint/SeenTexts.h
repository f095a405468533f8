#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lint {

/// Remembers texts with the line that each was first seen on.
///
/// A period may have half a million of them, and most are new: the table holds hash and index only,
/// so that a new text costs one look into memory that is far away.
class SeenTexts {
public:
    /// The line that has had `text` already; else none, and `line` has it from now on.
    std::optional<std::uint64_t> Add(std::string_view text, std::uint64_t line);

    void Clear();

private:
    // A document that the TV can read has fewer bytes than 32 bits count.
    struct Entry {
        std::uint32_t textEnd = 0; ///< in `texts_`; it begins where the one before ends
        std::uint32_t line = 0;
    };
    struct Slot {
        std::uint32_t hash = 0;
        std::uint32_t number = 0; ///< of the entry, from 1; 0 for a free slot
    };

    void Grow();
    std::string_view TextOf(std::uint32_t number) const;

    std::string texts_;
    std::vector<Entry> entries_;
    std::vector<Slot> slots_; ///< a power of two, at most half of them taken
};

/// The same for numbers. Mostly they ascend, and then there is nothing to look up.
class SeenNumbers {
public:
    std::optional<std::uint64_t> Add(int number, std::uint64_t line);

    void Clear();

private:
    struct Entry {
        int number = 0;
        std::uint32_t line = 0;
    };

    std::vector<Entry> ascending_;
    SeenTexts others_;
};

} // namespace lint
