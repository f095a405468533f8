#include "Diagnostics/Lint/DocumentWindow.h"

#include <algorithm>
#include <cstring>

namespace lint {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

/// The place of the first "\n" or "\r" from `start` on; the size without one. Every byte of a document
/// comes by here.
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

const Mark& DocumentWindow::Advance(std::uint64_t offset)
{
    Move(base_, offset);
    return base_;
}

Mark DocumentWindow::MarkAt(std::uint64_t offset, const Mark& from) const
{
    Mark mark = from;
    Move(mark, offset);
    return mark;
}

void DocumentWindow::Move(Mark& mark, std::uint64_t offset) const
{
    SkipByteOrderMark(mark);
    if (offset <= mark.offset || mark.offset < begin_) {
        return;
    }
    const std::string_view bytes = View(mark.offset, offset - mark.offset);
    std::size_t start = 0;
    for (std::size_t end = LineEnd(bytes, start); end < bytes.size(); end = LineEnd(bytes, start)) {
        // The second half of "\r\n" belongs to the line end that was counted before it.
        const std::uint64_t place = mark.offset + end;
        const bool counted =
            bytes[end] == '\n' && place > begin_ && bytes_[static_cast<std::size_t>(place - begin_) - 1] == '\r';
        mark.line += counted ? 0 : 1;
        mark.column = 1;
        start = end + 1;
        mark.lineStart = mark.offset + start;
    }
    mark.column += CharactersIn(bytes.substr(start));
    mark.offset += bytes.size();
}

void DocumentWindow::SkipByteOrderMark(Mark& mark) const
{
    if (mark.offset == 0 && View(0, kByteOrderMark.size()) == kByteOrderMark) {
        mark.offset = kByteOrderMark.size();
        mark.lineStart = mark.offset;
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

Excerpt DocumentWindow::ExcerptAt(const Mark& mark, std::uint64_t size) const
{
    if (mark.offset < begin_ || mark.offset > End()) {
        return {};
    }
    Excerpt excerpt;
    std::uint64_t first = std::max(mark.lineStart, begin_);
    if (mark.offset - first > kExcerptReach) {
        first = mark.offset - kExcerptReach;
    }
    std::string_view before = View(first, mark.offset - first);
    while (!before.empty() && IsContinuation(before.front())) {
        before.remove_prefix(1);
    }
    excerpt.cutBefore = mark.offset - before.size() != mark.lineStart;

    std::string_view after = View(mark.offset, End() - mark.offset);
    after = after.substr(0, after.find_first_of("\r\n"));
    if (after.size() > kExcerptReach) {
        std::size_t end = kExcerptReach;
        while (end > 0 && IsContinuation(after[end])) {
            --end;
        }
        after = after.substr(0, end);
        excerpt.cutAfter = true;
    }
    const std::string_view subject =
        after.substr(0, static_cast<std::size_t>(std::min<std::uint64_t>(size, after.size())));

    excerpt.text = Decoded(before);
    excerpt.start = excerpt.text.size();
    excerpt.text += Decoded(subject);
    excerpt.length = excerpt.text.size() - excerpt.start;
    excerpt.text += Decoded(after.substr(subject.size()));
    return excerpt;
}

/// The single-byte encodings that can be read are US-ASCII and ISO-8859-1.
std::string DocumentWindow::Decoded(std::string_view bytes) const
{
    if (!singleByte_) {
        return std::string(bytes);
    }
    std::string text;
    for (const char byte : bytes) {
        const auto code = static_cast<unsigned char>(byte);
        if (code < 0x80U) {
            text += byte;
        } else {
            text += static_cast<char>(0xC0U | (code >> 6U));
            text += static_cast<char>(0x80U | (code & 0x3FU));
        }
    }
    return text;
}

void DocumentWindow::Discard(std::uint64_t offset)
{
    const std::uint64_t kept = std::min(offset, base_.offset);
    if (kept <= begin_ + kExcerptReach + 1) {
        return;
    }
    const std::uint64_t from = kept - kExcerptReach - 1; // one more for the "\r" of a line end
    bytes_.erase(0, static_cast<std::size_t>(from - begin_));
    begin_ = from;
}

} // namespace lint
