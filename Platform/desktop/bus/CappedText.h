#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace desktop {

/// `text`, or if it is longer than `longest` bytes, its beginning and "...". A UTF-8 character is never
/// split.
std::string CappedText(std::string_view text, std::size_t longest);

} // namespace desktop
