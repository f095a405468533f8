#include "Diagnostics/Lint/Finding.h"

#include <algorithm>
#include <string_view>

namespace lint {

std::size_t CharactersIn(const Excerpt& excerpt)
{
    const std::string_view subject = std::string_view(excerpt.text).substr(excerpt.start, excerpt.length);
    return static_cast<std::size_t>(std::count_if(
        subject.begin(), subject.end(), [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; }));
}

} // namespace lint
