#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// Makes `text` safe for a terminal: control characters, invisible ones and broken UTF-8 become \xNN,
/// as in a log line.
std::string EscapedForTerminal(std::string_view text);

/// The number of columns that a terminal gives to `text`, which must be safe for one.
std::size_t WidthOnTerminal(const std::string& text);

/// `text`, which must be safe for a terminal, as far as it fits into `columns`; what is cut off shows as "...".
std::string CutForTerminal(const std::string& text, std::size_t columns);
