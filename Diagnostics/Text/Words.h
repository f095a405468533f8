#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// Parts of messages. None of them escapes anything.

/// "'text'"
std::string Quoted(std::string_view text);

/// The same, shortened where the text has more than 60 bytes.
std::string QuotedShort(std::string_view text);

/// Whether one of the names is `name`.
bool Contains(const std::vector<std::string>& names, const std::string& name);

/// "'A', 'B' and 'C'"
std::string QuotedList(const std::vector<std::string>& texts);

/// "1 file", "2 files"
std::string Counted(std::uint64_t number, const std::string& what);

/// "09"; a negative number as it is.
std::string TwoDigits(long long number);

/// "17 bytes", "1.1 GB"
std::string BytesText(std::uint64_t bytes);
