#pragma once

#include <optional>
#include <string>

#include "Diagnostics/Lint/Problem.h"
#include "Diagnostics/Lint/Vocabulary.h"

namespace lint {

/// Judges the text of a number; `subject` is what it belongs to, such as "item_count". The kind is
/// one of the kinds of numbers.
std::optional<Problem> JudgeNumber(const std::string& subject, ValueKind kind, const std::string& text);

} // namespace lint
