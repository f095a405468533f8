#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace desktop {

/// `text`, cut to `longest` bytes and followed by "..." when it is longer. A UTF-8 character is
/// kept whole or left out.
std::string CappedText(std::string_view text, std::size_t longest);

} // namespace desktop
