#include "Diagnostics/Lint/Problem.h"

namespace lint {

namespace {

constexpr std::size_t kMaxQuoted = 60;

} // namespace

std::string Quoted(std::string_view text)
{
    if (text.size() <= kMaxQuoted) {
        return "'" + std::string(text) + "'";
    }
    std::size_t end = kMaxQuoted;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) {
        --end;
    }
    return "'" + std::string(text.substr(0, end)) + "...'";
}

} // namespace lint
