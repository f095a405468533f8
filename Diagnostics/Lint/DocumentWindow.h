#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "Diagnostics/Text/Diagnostic.h"

namespace lint {

/// A place in the document. Line and column count from 1.
struct Position {
    std::uint64_t offset = 0;
    std::uint64_t lineStart = 0; ///< offset of the line's first character
    std::uint64_t line = 1;
    std::uint64_t column = 1;
};

/// The stretch of the document that is at hand, and the lines and columns in it.
///
/// Offsets count bytes from the document's start; columns count characters: code points in UTF-8,
/// bytes in an encoding of single bytes. A byte order mark has no column.
class DocumentWindow {
public:
    /// The bytes from `Begin()` on, for the reader to append to.
    std::string& Bytes() { return bytes_; }
    std::uint64_t Begin() const { return begin_; }
    std::uint64_t End() const { return begin_ + bytes_.size(); }

    /// The bytes of a stretch, as far as they are at hand.
    std::string_view View(std::uint64_t offset, std::uint64_t size) const;

    void SetSingleByteCharacters() { singleByte_ = true; }

    /// Goes forward to `offset` and gives the place there; going back stays where it is.
    const Position& Advance(std::uint64_t offset);

    /// The place of an offset at or after the one advanced to.
    Position PositionAt(std::uint64_t offset) const { return PositionAt(offset, base_); }

    /// The same, counted from `from`, a place at or before it that is at hand.
    Position PositionAt(std::uint64_t offset, const Position& from) const;

    /// The source line around `size` bytes from `position` on.
    Snippet SnippetAt(const Position& position, std::uint64_t size) const;

    /// Forgets what lies before `offset`, but for what a snippet from there on shows.
    void Discard(std::uint64_t offset);

    /// How many bytes a snippet shows after the place it is about.
    static constexpr std::size_t kSnippetReach = 120;

private:
    void Move(Position& position, std::uint64_t offset) const;
    void SkipByteOrderMark(Position& position) const;
    std::size_t CharactersIn(std::string_view bytes) const;
    bool IsContinuation(char byte) const;
    std::string Decoded(std::string_view bytes) const;

    std::string bytes_;
    std::uint64_t begin_ = 0;
    Position base_;
    bool singleByte_ = false;
};

} // namespace lint
