#pragma once

#include <set>
#include <string>
#include <string_view>

#include "Diagnostics/Lint/Rule.h"

/// Holds the linter and the library's parser together: where the linter finds neither error nor
/// warning, the parser must have every fact of the document. Gives what differs, or empty text. To
/// try the comparison itself, rules can be left out.
std::string FindDisagreement(std::string_view document, const std::set<lint::Rule>& ignored = {});

/// Whether the linter finds neither error nor warning in the document.
bool IsClean(std::string_view document, const std::set<lint::Rule>& ignored = {});
