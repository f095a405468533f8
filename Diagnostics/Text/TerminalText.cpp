#include "Diagnostics/Text/TerminalText.h"

#include <glib.h>

#include "Platform/desktop/base/VisibleText.h"

std::string EscapedForTerminal(std::string_view text)
{
    std::string out;
    while (!text.empty()) {
        const desktop::FirstCharacter first(text);
        const std::string_view bytes = text.substr(0, first.size);
        if (first.visible) {
            out += bytes;
        } else {
            for (const char byte : bytes) {
                desktop::AppendEscapedByte(out, byte);
            }
        }
        text.remove_prefix(first.size);
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
