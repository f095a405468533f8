#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace lint {

/// Puts up to `size` bytes at `buffer` and gives their number; 0 at the end. May throw.
using ByteSource = std::function<std::size_t(char* buffer, std::size_t size)>;

/// Reads a document as the TV does: up to its first zero byte.
class DocumentReader {
public:
    explicit DocumentReader(ByteSource source);

    /// Appends bytes to `buffer` until it has `size` of them or the document ends.
    void ReadUpTo(std::string& buffer, std::size_t size);

    bool AtEnd() const { return atEnd_; }

    /// The document's first bytes, zero bytes included, at most 512.
    const std::string& Head() const { return head_; }

    /// Whether a zero byte ended the document. Known at the end.
    bool EndedAtNul() const { return endedAtNul_; }

    /// Whether anything but zero bytes and white space follows the zero byte; reads on to know,
    /// up to 64 MiB.
    bool HasTextAfterNul();

private:
    ByteSource source_;
    std::string head_;
    std::string rest_; ///< what was read after the zero byte
    bool atEnd_ = false;
    bool endedAtNul_ = false;
};

} // namespace lint
