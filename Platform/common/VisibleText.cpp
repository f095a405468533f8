#include "Platform/common/VisibleText.h"

#include <algorithm>
#include <iterator>

#include "Platform/common/CharacterClass.h"
#include "Platform/common/Utf8.h"

namespace platform {

namespace {

struct Range {
    char32_t first;
    char32_t last;
};

/// Characters that are invisible although their category is that of letters and marks, and the two that
/// end a line.
constexpr Range kInvisible[] = {
    {0x034f, 0x034f}, {0x115f, 0x1160}, {0x17b4, 0x17b5}, {0x180b, 0x180f},   {0x2028, 0x2029},
    {0x3164, 0x3164}, {0xfe00, 0xfe0f}, {0xffa0, 0xffa0}, {0xe0100, 0xe01ef},
};

bool IsVisible(char32_t character)
{
    // Control and format characters, surrogates and unassigned numbers do not print.
    return IsPrintable(character) &&
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

bool IsPrintableAscii(char c)
{
    return c >= 0x20 && c < 0x7f;
}

/// The number of bytes at the start of the text that may be shown unchanged.
std::size_t VisiblePrefix(std::string_view text)
{
    std::size_t size = 0;
    while (size < text.size()) {
        if (IsPrintableAscii(text[size])) { // nearly every character of a log line is
            ++size;
            continue;
        }
        const FirstCharacter next(text.substr(size));
        if (!next.visible) {
            break;
        }
        size += next.size;
    }
    return size;
}

} // namespace

FirstCharacter::FirstCharacter(std::string_view text) : size(1), visible(false)
{
    const auto first = static_cast<unsigned char>(text.front());
    if (first < 0x80) {
        visible = first >= 0x20 && first != 0x7f;
        return;
    }
    if (const CodePoint character = FirstCodePoint(text); character.size != 0) {
        size = character.size;
        visible = IsVisible(character.value);
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
    return VisiblePrefix(text) < text.size();
}

std::string Escape(std::string_view text)
{
    std::string out;
    out.reserve(text.size() + 16);
    for (;;) {
        const std::size_t visible = VisiblePrefix(text);
        out += text.substr(0, visible);
        text.remove_prefix(visible);
        if (text.empty()) {
            return out;
        }
        const FirstCharacter invisible(text);
        for (const char byte : text.substr(0, invisible.size)) {
            AppendEscape(out, byte);
        }
        text.remove_prefix(invisible.size);
    }
}

} // namespace platform
