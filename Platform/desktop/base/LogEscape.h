#pragma once

#include <string>
#include <string_view>

namespace desktop {

/// True when a text holds characters that would break its line or command a terminal.
bool NeedsEscape(std::string_view text);

/// The text with control characters spelled out: \n, \r, \t, else \x1b and the like. C1 controls
/// count only in their UTF-8 form; bytes that are not UTF-8 pass as they are.
std::string Escape(std::string_view text);

} // namespace desktop
