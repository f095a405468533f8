#include "Diagnostics/Text/Encodings.h"

#include <algorithm>

#include <glib.h>

namespace {

bool IsAscii(char byte)
{
    return static_cast<unsigned char>(byte) < 0x80U;
}

/// How many bytes at the end may be the beginning of a character that goes on.
std::size_t CutOffBytes(std::string_view bytes)
{
    constexpr std::size_t kLongest = 3;
    for (std::size_t count = 1; count <= std::min(kLongest, bytes.size()); ++count) {
        const std::string_view last = bytes.substr(bytes.size() - count);
        // The result for a character that is cut short.
        if (g_utf8_get_char_validated(last.data(), static_cast<gssize>(count)) == static_cast<gunichar>(-2)) {
            return count;
        }
    }
    return 0;
}

} // namespace

void Utf8Check::Add(std::string_view bytes)
{
    if (broken_ || (pending_.empty() && std::all_of(bytes.begin(), bytes.end(), IsAscii))) {
        return;
    }
    wide_ = true;
    const std::string joined = pending_ + std::string(bytes);
    const std::size_t cut = CutOffBytes(joined);
    pending_ = joined.substr(joined.size() - cut);
    broken_ = !::IsUtf8(std::string_view(joined).substr(0, joined.size() - cut));
}

bool IsUtf8(std::string_view bytes)
{
    while (!bytes.empty()) {
        const char* end = nullptr;
        if (g_utf8_validate(bytes.data(), static_cast<gssize>(bytes.size()), &end) != FALSE) {
            return true;
        }
        const auto valid = static_cast<std::size_t>(end - bytes.data());
        if (bytes[valid] != '\0') {
            return false;
        }
        bytes.remove_prefix(valid + 1);
    }
    return true;
}

std::string FromLatin1(std::string_view bytes)
{
    std::string text;
    for (const char byte : bytes) {
        const auto code = static_cast<unsigned char>(byte);
        if (IsAscii(byte)) {
            text += byte;
        } else {
            text += static_cast<char>(0xC0U | (code >> 6U));
            text += static_cast<char>(0x80U | (code & 0x3FU));
        }
    }
    return text;
}
