#pragma once

#include <string>
#include <string_view>

namespace desktop {

/// True when a text holds what would break its line, command a terminal or leave no mark on it.
bool NeedsEscape(std::string_view text);

/// The text with those characters, and bytes that are not UTF-8, spelled out: \n, \r, \t, else \x1b
/// and the like, byte by byte.
std::string Escape(std::string_view text);

} // namespace desktop
