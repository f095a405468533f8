#include "Diagnostics/Text/Encodings.h"

#include <algorithm>

#include "Platform/common/Utf8.h"

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
        if (platform::FirstCodePoint(bytes.substr(bytes.size() - count)).cutOff) {
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
        const std::size_t size = platform::FirstCodePoint(bytes).size;
        if (size == 0) {
            return false;
        }
        bytes.remove_prefix(size);
    }
    return true;
}

std::string FromLatin1(std::string_view bytes)
{
    std::string text;
    for (const char byte : bytes) {
        platform::AppendCodePoint(text, static_cast<unsigned char>(byte));
    }
    return text;
}
