#pragma once

#include <string>
#include <string_view>

/// Holds the linter and the library's parser together: where the linter finds neither error nor
/// warning, the parser must have every fact of the document. Gives what differs, or empty text.
std::string FindDisagreement(std::string_view document);

/// Whether the linter finds neither error nor warning in the document.
bool IsClean(std::string_view document);
