#include "Platform/desktop/base/VisibleText.h"

#include <algorithm>
#include <glib.h>
#include <iterator>

namespace desktop {

namespace {

struct Range {
    gunichar first;
    gunichar last;
};

/// Characters that are invisible although their category is that of letters and marks, and the two that
/// end a line.
constexpr Range kInvisible[] = {
    {0x034f, 0x034f}, {0x115f, 0x1160}, {0x17b4, 0x17b5}, {0x180b, 0x180f},   {0x2028, 0x2029},
    {0x3164, 0x3164}, {0xfe00, 0xfe0f}, {0xffa0, 0xffa0}, {0xe0100, 0xe01ef},
};

bool IsVisible(gunichar character)
{
    // Control and format characters, surrogates and unassigned numbers do not print.
    return g_unichar_isprint(character) != FALSE &&
           std::none_of(std::begin(kInvisible), std::end(kInvisible),
                        [=](const Range& range) { return character >= range.first && character <= range.last; });
}

void AppendEscape(std::string& out, char c)
{
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
        AppendEscapedByte(out, c);
    }
}

} // namespace

FirstCharacter::FirstCharacter(std::string_view text) : size(1), visible(false)
{
    const auto first = static_cast<unsigned char>(text.front());
    if (first < 0x80) {
        visible = first >= 0x20 && first != 0x7f;
        return;
    }
    const gunichar character = g_utf8_get_char_validated(text.data(), static_cast<gssize>(text.size()));
    // The type's last two values mean "broken" and "cut short".
    if (character < static_cast<gunichar>(-2)) {
        size = static_cast<std::size_t>(g_unichar_to_utf8(character, nullptr));
        visible = IsVisible(character);
    }
}

void AppendEscapedByte(std::string& out, char byte)
{
    constexpr char kDigits[] = "0123456789abcdef";
    const auto value = static_cast<unsigned char>(byte);
    out += "\\x";
    out += kDigits[value >> 4U];
    out += kDigits[value & 0xfU];
}

bool NeedsEscape(std::string_view text)
{
    // Nearly every text is plain ASCII, which a loop without an exit finds fastest.
    bool suspect = false;
    for (const char character : text) {
        const auto c = static_cast<unsigned char>(character);
        suspect |= c < 0x20 || c >= 0x7f;
    }
    while (suspect && !text.empty()) {
        const FirstCharacter first(text);
        if (!first.visible) {
            return true;
        }
        text.remove_prefix(first.size);
    }
    return false;
}

std::string Escape(std::string_view text)
{
    std::string out;
    out.reserve(text.size() + 16);
    while (!text.empty()) {
        const FirstCharacter first(text);
        const std::string_view bytes = text.substr(0, first.size);
        if (first.visible) {
            out += bytes;
        } else {
            for (const char byte : bytes) {
                AppendEscape(out, byte);
            }
        }
        text.remove_prefix(first.size);
    }
    return out;
}

} // namespace desktop
