#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// The first character of a text in UTF-8.
struct Character {
    char32_t code = 0;
    std::size_t size = 0; ///< its bytes; 0 where the text is empty or does not begin with a character
};

Character FirstCharacterOf(std::string_view text);

/// Appends a code point as UTF-8.
void AppendCharacter(std::string& text, char32_t code);
