#pragma once

#include <cstddef>

#include "Diagnostics/Group/Difference.h"
#include "Diagnostics/Group/Document.h"

namespace group {

/// Adds where the periods of a document and their items are not those of the first document. Periods belong
/// together by their times, items by their files; in which order the document has them does not matter.
void ComparePeriods(const Document& first, const Document& other, std::size_t number, DifferenceList& differences);

} // namespace group
