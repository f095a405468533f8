#pragma once

#include <string>

#include "Diagnostics/Lint/DocumentReader.h"

namespace lint {

// Why the library's parser rejects a document, whatever its elements mean: "line 3, column 5: ..."

std::string ParseErrorText(const std::string& document);
std::string ParseErrorText(const ByteSource& source);

} // namespace lint
