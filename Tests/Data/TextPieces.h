#pragma once

#include <functional>
#include <string>
#include <vector>

/// The pieces in which a text arrives.
using Pieces = std::vector<std::string>;

/// Calls `take` with every way to cut the text; 2^(n-1) of them for n bytes.
void ForEachSplit(const std::string& text, const std::function<void(const Pieces&)>& take);

/// Pieces of `size` bytes, the last one of what is left.
Pieces PiecesOf(const std::string& text, std::size_t size);

/// One way to make the parser cut a text.
struct Cut {
    const char* what;
    /// The content that says `text` with a cut at `at`.
    std::function<std::string(const std::string& text, std::size_t at)> content;
    /// Whether the byte at `at` becomes a piece of its own.
    bool takesOut;
};

/// Every such way. The entities that they need are those of `kCutEntities`.
const std::vector<Cut>& Cuts();

/// A document type for any document, with an empty entity and one for each printable character.
std::string CutEntities();

/// The pieces in which the parser delivers `text` when it is cut so; none of them is empty.
Pieces PiecesOfCut(const Cut& cut, const std::string& text, std::size_t at);
