#include "Diagnostics/Text/TerminalText.h"

#include <algorithm>

#include <glib.h>

#include "Platform/desktop/base/VisibleText.h"

std::string EscapedForTerminal(std::string_view text)
{
    if (!desktop::NeedsEscape(text)) {
        return std::string(text);
    }
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

namespace {

std::size_t WidthOf(gunichar character)
{
    if (g_unichar_iszerowidth(character) != FALSE) {
        return 0;
    }
    return g_unichar_iswide(character) != FALSE ? 2 : 1;
}

} // namespace

std::size_t WidthOnTerminal(const std::string& text)
{
    std::size_t width = 0;
    for (const char* next = text.c_str(); *next != '\0'; next = g_utf8_next_char(next)) {
        width += WidthOf(g_utf8_get_char(next));
    }
    return width;
}

std::string CutForTerminal(const std::string& text, std::size_t columns)
{
    constexpr std::string_view kCut = "...";
    const std::size_t room = columns - std::min(columns, kCut.size());
    std::size_t width = 0;
    std::size_t kept = 0; ///< bytes that leave room for the mark
    for (const char* next = text.c_str(); *next != '\0'; next = g_utf8_next_char(next)) {
        width += WidthOf(g_utf8_get_char(next));
        if (width > columns) {
            return text.substr(0, kept) + std::string(kCut.substr(0, columns));
        }
        if (width <= room) {
            kept = static_cast<std::size_t>(g_utf8_next_char(next) - text.c_str());
        }
    }
    return text;
}
