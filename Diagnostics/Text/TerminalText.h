#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// Makes `text` safe for a terminal: control characters and broken UTF-8 become \xNN.
std::string EscapedForTerminal(std::string_view text);

/// The number of columns that a terminal gives to `text`, which must be safe for one.
std::size_t WidthOnTerminal(const std::string& text);
