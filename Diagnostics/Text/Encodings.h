#pragma once

#include <string>
#include <string_view>

/// Checks whether bytes that come in pieces are UTF-8.
class Utf8Check {
public:
    void Add(std::string_view bytes);

    /// Whether all of it was UTF-8, with no character cut off at the end.
    bool IsUtf8() const { return !broken_ && pending_.empty(); }

    /// Whether all of it was UTF-8 so far; the next piece may begin within a character.
    bool MayBeUtf8() const { return !broken_; }

    /// Whether there was more than ASCII.
    bool HasWideCharacters() const { return wide_; }

private:
    std::string pending_; ///< the beginning of a character
    bool broken_ = false;
    bool wide_ = false;
};

/// Whether the bytes are UTF-8. A zero byte is a character.
bool IsUtf8(std::string_view bytes);

/// A text in ISO-8859-1 as UTF-8.
std::string FromLatin1(std::string_view bytes);
