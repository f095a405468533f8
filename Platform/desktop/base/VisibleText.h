#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace desktop {

/// How text begins: the bytes of its first character, one byte where that is not UTF-8, and
/// whether it may be shown as it is. Control characters may not, nor what leaves no mark: format
/// characters such as those that turn the direction of writing, fillers, and characters without
/// width. `text` must not be empty.
struct FirstCharacter {
    explicit FirstCharacter(std::string_view text);

    std::size_t size;
    bool visible;
};

/// Appends "\x1b" and the like.
void AppendEscapedByte(std::string& out, char byte);

} // namespace desktop
