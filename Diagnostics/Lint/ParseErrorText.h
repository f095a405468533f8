#pragma once

#include <string>

#include "Diagnostics/Lint/DocumentReader.h"
#include "Diagnostics/Lint/Lint.h"

namespace lint {

/// Options with which the linter finds only what makes the TV reject or misread a document, at most one.
Options OnlyWhatRejects();

// Why the library's parser rejects a document, whatever its elements mean: "line 3, column 5: ..."

std::string ParseErrorText(const std::string& document);
std::string ParseErrorText(const ByteSource& source);
std::string ParseErrorText(const Report& report); ///< of a document that was linted with these options

} // namespace lint
