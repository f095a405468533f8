#pragma once

namespace platform {

// What Unicode says of a code point. Each platform brings its own tables.

/// Neither a control or format character nor half of a pair.
bool IsPrintable(char32_t character);

/// Takes two columns of a terminal.
bool IsWide(char32_t character);

/// Takes none, as a combining mark.
bool IsWithoutWidth(char32_t character);

} // namespace platform
