#include "Tests/Data/TextPieces.h"

#include <cstdint>

namespace {

/// The text with `middle` before the byte at `at`.
std::string Insert(std::string text, std::size_t at, const std::string& middle)
{
    return text.insert(at, middle);
}

/// The text with `middle` in place of the byte at `at`.
std::string Replace(std::string text, std::size_t at, const std::string& middle)
{
    return at < text.size() ? text.replace(at, 1, middle) : text;
}

std::string Code(const std::string& text, std::size_t at)
{
    return at < text.size() ? std::to_string(static_cast<unsigned char>(text[at])) : "";
}

} // namespace

void ForEachSplit(const std::string& text, const std::function<void(const Pieces&)>& take)
{
    // Each bit says whether there is a cut behind one byte.
    const std::uint32_t ways = text.empty() ? 1U : 1U << (text.size() - 1);
    for (std::uint32_t cuts = 0; cuts < ways; ++cuts) {
        Pieces pieces(1);
        for (std::size_t i = 0; i < text.size(); ++i) {
            pieces.back() += text[i];
            if ((cuts >> i & 1U) != 0) {
                pieces.emplace_back();
            }
        }
        take(pieces);
    }
}

Pieces PiecesOf(const std::string& text, std::size_t size)
{
    Pieces pieces;
    for (std::size_t at = 0; at < text.size(); at += size) {
        pieces.push_back(text.substr(at, size));
    }
    return pieces;
}

const std::vector<Cut>& Cuts()
{
    const auto inserting = [](const std::string& middle) {
        return [middle](const std::string& text, std::size_t at) { return Insert(text, at, middle); };
    };
    static const std::vector<Cut> cuts = {
        {"a comment", inserting("<!-- c -->"), false},
        {"an instruction", inserting("<?p i?>"), false},
        {"an empty entity", inserting("&none;"), false},
        {"an empty section", inserting("<![CDATA[]]>"), false},
        {"two sections",
         [](const std::string& text, std::size_t at) { return "<![CDATA[" + Insert(text, at, "]]><![CDATA[") + "]]>"; },
         false},
        {"a section around one character",
         [](const std::string& text, std::size_t at) {
             return at < text.size() ? Replace(text, at, std::string("<![CDATA[") + text[at] + "]]>") : text;
         },
         true},
        {"a decimal reference",
         [](const std::string& text, std::size_t at) { return Replace(text, at, "&#" + Code(text, at) + ';'); }, true},
        {"an entity of one character",
         [](const std::string& text, std::size_t at) { return Replace(text, at, "&c" + Code(text, at) + ';'); }, true},
    };
    return cuts;
}

std::string CutEntities()
{
    std::string text = "<!DOCTYPE rsp [<!ENTITY none ''>";
    for (int code = '0'; code <= 'z'; ++code) {
        const std::string number = std::to_string(code);
        text += "<!ENTITY c" + number + " '&#38;#" + number + ";'>";
    }
    return text + "]>";
}

Pieces PiecesOfCut(const Cut& cut, const std::string& text, std::size_t at)
{
    const std::size_t taken = cut.takesOut && at < text.size() ? 1 : 0;
    Pieces pieces;
    for (const std::string& piece : {text.substr(0, at), text.substr(at, taken), text.substr(at + taken)}) {
        if (!piece.empty()) {
            pieces.push_back(piece);
        }
    }
    return pieces;
}
