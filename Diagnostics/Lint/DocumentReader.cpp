#include "Diagnostics/Lint/DocumentReader.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace lint {

namespace {

/// Enough to recognise another kind of file.
constexpr std::size_t kHeadSize = 512;
constexpr std::size_t kReadUnit = 65536;

/// The most bytes that are searched for text: a device such as /dev/zero has no end.
constexpr std::uint64_t kMaxSearched = 67108864;

bool HasText(std::string_view bytes)
{
    return bytes.find_first_not_of(std::string_view("\0 \t\r\n", 5)) != std::string_view::npos;
}

} // namespace

DocumentReader::DocumentReader(ByteSource source) : source_(std::move(source)) {}

void DocumentReader::ReadUpTo(std::string& buffer, std::size_t size)
{
    while (!atEnd_ && buffer.size() < size) {
        const std::size_t before = buffer.size();
        buffer.resize(size);
        const std::size_t count = source_(buffer.data() + before, size - before);
        buffer.resize(before + count);
        atEnd_ = count == 0;
        if (head_.size() < kHeadSize) {
            head_.append(buffer, before, std::min(count, kHeadSize - head_.size()));
        }
        const std::size_t nul = buffer.find('\0', before);
        if (nul != std::string::npos) {
            rest_ = buffer.substr(nul);
            buffer.resize(nul);
            atEnd_ = true;
            endedAtNul_ = true;
        }
    }
}

bool DocumentReader::HasTextAfterNul()
{
    if (!endedAtNul_) {
        return false;
    }
    for (std::uint64_t searched = rest_.size(); !HasText(rest_); searched += rest_.size()) {
        if (searched > kMaxSearched) {
            return false;
        }
        rest_.resize(kReadUnit);
        const std::size_t count = source_(rest_.data(), rest_.size());
        rest_.resize(count);
        if (count == 0) {
            return false;
        }
    }
    return true;
}

} // namespace lint
