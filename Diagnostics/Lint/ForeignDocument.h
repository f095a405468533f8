#pragma once

#include <string>
#include <string_view>

namespace lint {

/// A file that is something else than XML, known by its first bytes.
struct ForeignDocument {
    const char* kind = nullptr;   ///< "an HTML page"; null for none that is known
    const char* advice = nullptr; ///< what to do about it
};

/// What a file that does not parse may be. `head` is its beginning, zero bytes included; a few hundred
/// bytes are enough.
ForeignDocument FindForeignDocument(std::string_view head);

/// The encoding of units wider than a byte that a document begins in: "UTF-16" or "UTF-32"; null for none.
/// It begins with a byte order mark, or its "<" has a zero byte beside it.
const char* WideEncoding(std::string_view head);

} // namespace lint
