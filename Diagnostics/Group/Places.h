#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "Diagnostics/Lint/DocumentWindow.h"

namespace group {

/// What a group compares besides the periods.
enum class Field { kProjectId, kVersion, kIsMaster, kPlayers, kMasterAddress, kAddress, kSubnetMask, kCount };

constexpr std::size_t kFields = static_cast<std::size_t>(Field::kCount);

/// The attribute's name in the document.
const char* NameOf(Field field);

/// A stretch of a document.
struct Place {
    lint::Position position;
    std::uint64_t size = 0; ///< bytes
};

struct PeriodPlaces {
    Place period;             ///< its start tag
    std::vector<Place> items; ///< their start tags
};

/// Where a document has what the library reads from it. The library keeps the last of several values; so do the
/// places.
struct Places {
    Place root; ///< the outermost start tag
    /// The value, else the tag that should have it, else the outermost tag.
    std::array<Place, kFields> fields;
    /// By the same numbers as the periods and items of the policy.
    std::vector<PeriodPlaces> periods;
};

/// Finds the places of a document that the library has accepted; `window` holds all of it. Throws
/// `std::bad_alloc` without memory.
Places FindPlaces(lint::DocumentWindow& window);

} // namespace group
