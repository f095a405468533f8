#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace platform {

/// The first character of a text in UTF-8.
struct CodePoint {
    char32_t value = 0;
    std::size_t size = 0; ///< its bytes; 0 where the text is empty or does not begin with a character
    bool cutOff = false;  ///< the text ends within it; `size` is 0
};

CodePoint FirstCodePoint(std::string_view text);

/// The characters of a text, which must be UTF-8.
std::size_t CountCodePoints(std::string_view text);

/// Appends a code point as UTF-8.
void AppendCodePoint(std::string& text, char32_t value);

} // namespace platform
