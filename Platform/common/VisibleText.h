#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace platform {

/// How text begins: the bytes of its first character (one byte where that is not UTF-8) and whether it
/// may be shown unchanged. Control characters may not, nor may characters that leave no mark: format
/// characters such as those that turn the direction of writing, fillers, and characters without width.
/// `text` must not be empty.
struct FirstCharacter {
    explicit FirstCharacter(std::string_view text);

    std::size_t size;
    bool visible;
};

/// Appends "\x1b" and the like.
void AppendEscapedByte(std::string& out, char byte);

/// True when a text holds a character that would break its line, command a terminal or leave no mark.
bool NeedsEscape(std::string_view text);

/// The text with those characters, and bytes that are not UTF-8, spelled out: \n, \r, \t, otherwise
/// \x1b and the like, byte by byte.
std::string Escape(std::string_view text);

} // namespace platform
