#include "Diagnostics/Text/Characters.h"

namespace {

struct Length {
    std::size_t size;
    unsigned char firstBits;
    char32_t least; ///< smaller ones have a shorter form
};

Length LengthFrom(unsigned char first)
{
    if (first < 0x80U) {
        return {1, first, 0};
    }
    if (first >= 0xC2U && first < 0xE0U) {
        return {2, static_cast<unsigned char>(first & 0x1FU), 0x80};
    }
    if (first >= 0xE0U && first < 0xF0U) {
        return {3, static_cast<unsigned char>(first & 0x0FU), 0x800};
    }
    if (first >= 0xF0U && first < 0xF5U) {
        return {4, static_cast<unsigned char>(first & 0x07U), 0x10000};
    }
    return {0, 0, 0};
}

} // namespace

Character FirstCharacterOf(std::string_view text)
{
    if (text.empty()) {
        return {};
    }
    const Length length = LengthFrom(static_cast<unsigned char>(text.front()));
    if (length.size == 0 || length.size > text.size()) {
        return {};
    }
    char32_t code = length.firstBits;
    for (const char byte : text.substr(1, length.size - 1)) {
        const auto bits = static_cast<unsigned char>(byte);
        if ((bits & 0xC0U) != 0x80U) {
            return {};
        }
        code = code << 6U | (bits & 0x3FU);
    }
    const bool isSurrogate = code >= 0xD800 && code < 0xE000;
    return code < length.least || isSurrogate || code > 0x10FFFF ? Character() : Character{code, length.size};
}

void AppendCharacter(std::string& text, char32_t code)
{
    const auto append = [&text](char32_t byte) { text += static_cast<char>(static_cast<unsigned char>(byte)); };
    if (code < 0x80) {
        append(code);
    } else if (code < 0x800) {
        append(0xC0U | code >> 6U);
        append(0x80U | (code & 0x3FU));
    } else if (code < 0x10000) {
        append(0xE0U | code >> 12U);
        append(0x80U | (code >> 6U & 0x3FU));
        append(0x80U | (code & 0x3FU));
    } else {
        append(0xF0U | code >> 18U);
        append(0x80U | (code >> 12U & 0x3FU));
        append(0x80U | (code >> 6U & 0x3FU));
        append(0x80U | (code & 0x3FU));
    }
}
