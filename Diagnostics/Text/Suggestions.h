#pragma once

#include <string>
#include <string_view>
#include <vector>

/// How many single-character edits (insert, remove, replace, swap of neighbours) lie between two
/// words, letters compared without regard to case.
std::size_t EditDistance(std::string_view left, std::string_view right);

/// The candidates that `word` may have been meant for, the closest first, at most `limit`. None for a
/// word of more than 64 bytes.
std::vector<std::string> Suggest(std::string_view word, const std::vector<std::string>& candidates,
                                 std::size_t limit = 3);

/// "A", "A or B", "A, B or C".
std::string JoinWithOr(const std::vector<std::string>& words);
