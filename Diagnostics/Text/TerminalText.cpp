#include "Diagnostics/Text/TerminalText.h"

#include <glib.h>

namespace {

void AppendEscapedByte(std::string& out, char byte)
{
    static constexpr char kDigits[] = "0123456789abcdef";
    const auto value = static_cast<unsigned char>(byte);
    out += "\\x";
    out += kDigits[value >> 4U];
    out += kDigits[value & 0xFU];
}

} // namespace

std::string EscapedForTerminal(std::string_view text)
{
    std::string out;
    while (!text.empty()) {
        const gunichar character = g_utf8_get_char_validated(text.data(), static_cast<gssize>(text.size()));
        // The last two values of the type say "broken" and "cut short".
        const bool broken = character >= static_cast<gunichar>(-2);
        const std::size_t length =
            broken || character == 0 ? 1 : static_cast<std::size_t>(g_unichar_to_utf8(character, nullptr));
        if (!broken && g_unichar_isprint(character) != FALSE) {
            out.append(text.substr(0, length));
        } else {
            for (const char byte : text.substr(0, length)) {
                AppendEscapedByte(out, byte);
            }
        }
        text.remove_prefix(length);
    }
    return out;
}

std::size_t WidthOnTerminal(const std::string& text)
{
    std::size_t width = 0;
    for (const char* next = text.c_str(); *next != '\0'; next = g_utf8_next_char(next)) {
        const gunichar character = g_utf8_get_char(next);
        if (g_unichar_iszerowidth(character) == FALSE) {
            width += g_unichar_iswide(character) != FALSE ? 2 : 1;
        }
    }
    return width;
}
