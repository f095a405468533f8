#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// Writes data to stdout and flushes it, so that a reader sees each line at once.
///
/// Returns false when the reader has gone: that is no error, there is just nobody left to write
/// for. Throws `Failure` when the data cannot be written for any other reason.
[[nodiscard]] bool Print(std::string_view data);

/// Writes the line "vqmctl: <text>" to stderr. Control characters and bytes that are no UTF-8 are
/// escaped, for `text` quotes what the user typed and what files hold.
void Complain(std::string_view text);

/// Makes `text` safe for a terminal: control characters and broken UTF-8 become \xNN.
std::string EscapedForTerminal(std::string_view text);

/// How many columns of a terminal a text takes that is fit for one.
std::size_t WidthOnTerminal(const std::string& text);
