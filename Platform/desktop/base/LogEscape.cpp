#include "Platform/desktop/base/LogEscape.h"

namespace desktop {

namespace {

constexpr unsigned char kDelete = 0x7f;
constexpr unsigned char kC1Lead = 0xc2; ///< first byte of U+0080 to U+00BF
constexpr unsigned char kC1Last = 0x9f;

bool IsControl(unsigned char c)
{
    return c < 0x20 || c == kDelete;
}

bool IsC1(std::string_view text, std::size_t at)
{
    if (static_cast<unsigned char>(text[at]) != kC1Lead || at + 1 >= text.size()) {
        return false;
    }
    const auto second = static_cast<unsigned char>(text[at + 1]);
    return second >= 0x80 && second <= kC1Last;
}

void AppendEscape(std::string& out, unsigned char c)
{
    constexpr char kDigits[] = "0123456789abcdef";
    switch (c) {
    case '\n':
        out += "\\n";
        break;
    case '\r':
        out += "\\r";
        break;
    case '\t':
        out += "\\t";
        break;
    default:
        out += "\\x";
        out += kDigits[c >> 4U];
        out += kDigits[c & 0xfU];
    }
}

} // namespace

bool NeedsEscape(std::string_view text)
{
    // Nearly every line is free of these bytes, which a loop without a way out finds soonest.
    bool suspect = false;
    for (const char character : text) {
        const auto c = static_cast<unsigned char>(character);
        suspect |= c < 0x20 || c == kDelete || c == kC1Lead;
    }
    if (!suspect) {
        return false;
    }
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (IsControl(static_cast<unsigned char>(text[i])) || IsC1(text, i)) {
            return true;
        }
    }
    return false;
}

std::string Escape(std::string_view text)
{
    std::string out;
    out.reserve(text.size() + 16);
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        if (IsC1(text, i)) {
            ++i;
            AppendEscape(out, static_cast<unsigned char>(text[i]));
        } else if (IsControl(c)) {
            AppendEscape(out, c);
        } else {
            out += text[i];
        }
    }
    return out;
}

} // namespace desktop
