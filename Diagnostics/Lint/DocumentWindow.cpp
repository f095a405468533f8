#include "Diagnostics/Lint/DocumentWindow.h"

#include <algorithm>
#include <cstring>

#include "Diagnostics/Text/Encodings.h"

namespace lint {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

/// The place of the first "\n" or "\r" from `start` on; the size without one. It uses `memchr`, because
/// every byte of a document passes here.
std::size_t LineEnd(std::string_view bytes, std::size_t start)
{
    const auto find = [&bytes, start](char wanted, std::size_t end) {
        const void* const found = start < end ? std::memchr(bytes.data() + start, wanted, end - start) : nullptr;
        return found == nullptr ? end : static_cast<std::size_t>(static_cast<const char*>(found) - bytes.data());
    };
    return find('\r', find('\n', bytes.size()));
}

} // namespace

std::string_view DocumentWindow::View(std::uint64_t offset, std::uint64_t size) const
{
    if (offset < begin_ || offset > End()) {
        return {};
    }
    return std::string_view(bytes_).substr(static_cast<std::size_t>(offset - begin_),
                                           static_cast<std::size_t>(std::min(size, End() - offset)));
}

const Position& DocumentWindow::Advance(std::uint64_t offset)
{
    Move(base_, offset);
    return base_;
}

Position DocumentWindow::PositionAt(std::uint64_t offset, const Position& from) const
{
    Position position = from;
    Move(position, offset);
    return position;
}

void DocumentWindow::Move(Position& position, std::uint64_t offset) const
{
    SkipByteOrderMark(position);
    if (offset <= position.offset || position.offset < begin_) {
        return;
    }
    const std::string_view bytes = View(position.offset, offset - position.offset);
    std::size_t start = 0;
    for (std::size_t end = LineEnd(bytes, start); end < bytes.size(); end = LineEnd(bytes, start)) {
        // The second half of "\r\n" belongs to the line end that was counted before it.
        const std::uint64_t place = position.offset + end;
        const bool counted =
            bytes[end] == '\n' && place > begin_ && bytes_[static_cast<std::size_t>(place - begin_) - 1] == '\r';
        position.line += counted ? 0 : 1;
        position.column = 1;
        start = end + 1;
        position.lineStart = position.offset + start;
    }
    position.column += CharactersIn(bytes.substr(start));
    position.offset += bytes.size();
}

void DocumentWindow::SkipByteOrderMark(Position& position) const
{
    if (position.offset == 0 && View(0, kByteOrderMark.size()) == kByteOrderMark) {
        position.offset = kByteOrderMark.size();
        position.lineStart = position.offset;
    }
}

std::size_t DocumentWindow::CharactersIn(std::string_view bytes) const
{
    if (singleByte_) {
        return bytes.size();
    }
    std::size_t count = 0;
    for (const char byte : bytes) {
        count += (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U ? 0 : 1;
    }
    return count;
}

bool DocumentWindow::IsContinuation(char byte) const
{
    return !singleByte_ && (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

Snippet DocumentWindow::SnippetAt(const Position& position, std::uint64_t size) const
{
    if (position.offset < begin_ || position.offset > End()) {
        return {};
    }
    Snippet snippet;
    std::uint64_t first = std::max(position.lineStart, begin_);
    if (position.offset - first > kSnippetReach) {
        first = position.offset - kSnippetReach;
    }
    std::string_view before = View(first, position.offset - first);
    while (!before.empty() && IsContinuation(before.front())) {
        before.remove_prefix(1);
    }
    snippet.cutBefore = position.offset - before.size() != position.lineStart;

    // One byte more than is shown is enough to see that the line goes on.
    std::string_view after = View(position.offset, kSnippetReach + 1);
    after = after.substr(0, after.find_first_of("\r\n"));
    if (after.size() > kSnippetReach) {
        std::size_t end = kSnippetReach;
        while (end > 0 && IsContinuation(after[end])) {
            --end;
        }
        after = after.substr(0, end);
        snippet.cutAfter = true;
    }
    const std::string_view subject =
        after.substr(0, static_cast<std::size_t>(std::min<std::uint64_t>(size, after.size())));

    snippet.text = Decoded(before);
    snippet.start = snippet.text.size();
    snippet.text += Decoded(subject);
    snippet.length = snippet.text.size() - snippet.start;
    snippet.text += Decoded(after.substr(subject.size()));
    return snippet;
}

/// The single-byte encodings that can be read are US-ASCII and ISO-8859-1.
std::string DocumentWindow::Decoded(std::string_view bytes) const
{
    return singleByte_ ? FromLatin1(bytes) : std::string(bytes);
}

void DocumentWindow::Discard(std::uint64_t offset)
{
    const std::uint64_t kept = std::min(offset, base_.offset);
    if (kept <= begin_ + kSnippetReach + 1) {
        return;
    }
    const std::uint64_t from = kept - kSnippetReach - 1; // one more for the "\r" of a line end
    bytes_.erase(0, static_cast<std::size_t>(from - begin_));
    begin_ = from;
}

} // namespace lint
