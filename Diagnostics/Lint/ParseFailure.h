#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include <expat.h>

namespace lint {

/// Where and how the parser gave a document up.
struct ParseFailure {
    XML_Error error = XML_ERROR_NONE;
    std::string_view before;   ///< what is at hand of the document before the place
    std::string_view after;    ///< and from the place on
    std::string encoding{};    ///< as the document declares it; empty when it does not
    std::string openElement{}; ///< the innermost one that is open; empty for none
    std::uint64_t openLine = 0;
    bool rootClosed = false; ///< the document's outermost element has ended
    bool endedAtNul = false; ///< a zero byte ended the document
};

/// What is wrong and what to do, as one person would say it to another: "the byte E9 is not UTF-8; save the
/// document as UTF-8". The cause is found in the bytes: the parser only knows that it cannot go on.
std::string DescribeParseFailure(const ParseFailure& failure);

/// The same for a place where the parser found a character that cannot stand there.
std::string DescribeInvalidToken(const ParseFailure& failure);

} // namespace lint
