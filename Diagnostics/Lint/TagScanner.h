#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace lint {

/// Where an attribute stands in a start tag, in bytes from the tag's '<'.
struct AttributePlace {
    std::size_t name = 0;
    std::size_t nameSize = 0;
    std::size_t value = 0; ///< the first byte inside the quotes
    std::size_t valueSize = 0;
};

/// Finds the attributes of a start tag that the XML parser has accepted, in their order. Gives none
/// when the text is not a start tag, as where the element comes out of an entity.
std::vector<AttributePlace> ScanAttributes(std::string_view tag);

} // namespace lint
