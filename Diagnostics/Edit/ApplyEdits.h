#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Diagnostics/Text/Edit.h"

/// Sorts the edits by their places. Throws `std::logic_error` where one lies outside the document, expects
/// other bytes than stand there, or overlaps another: then nothing must be changed.
std::vector<Edit> SortedEdits(std::string_view document, std::vector<Edit> edits);

/// The document with these edits, which are sorted. Every byte that no edit names stays.
std::string ApplyEdits(std::string_view document, const std::vector<Edit>& edits);
