#pragma once

#include <string_view>
#include <vector>

#include "Diagnostics/Lint/Lint.h"
#include "Diagnostics/Text/Edit.h"

namespace lint {

/// What mends a document: the edits for all findings whose repair leaves no doubt about what was meant, not
/// sorted. Where the encoding is declared wrongly, they are those of the document as it reads in UTF-8. Rules
/// that the options ignore repair nothing.
std::vector<Edit> FindRepairs(std::string_view document, Options options);

} // namespace lint
