#include "Diagnostics/Text/LookAlike.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "Diagnostics/Text/Normalization.h"
#include "Diagnostics/Text/Words.h"

namespace {

constexpr char32_t kNoBreakSpace = 0xA0;

/// For Latin, Greek and Cyrillic letters, in every locale.
char32_t LowerCase(char32_t code)
{
    const bool latin = code >= 'A' && code <= 'Z';
    const bool latinExtra = code >= 0xC0 && code <= 0xDE && code != 0xD7; // the multiplication sign
    const bool greekOrCyrillic = (code >= 0x391 && code <= 0x3A9) || (code >= 0x410 && code <= 0x42F);
    if (latin || latinExtra || greekOrCyrillic) {
        return code + 0x20;
    }
    return code >= 0x400 && code <= 0x40F ? code + 0x50 : code;
}

std::u32string WithoutCase(std::u32string text)
{
    std::transform(text.begin(), text.end(), text.begin(), LowerCase);
    return text;
}

bool IsBlank(char32_t code)
{
    return code == ' ' || code == '_' || code == kNoBreakSpace || (code >= '\t' && code <= '\r');
}

std::u32string WithoutBlanks(std::u32string text)
{
    text.erase(std::remove_if(text.begin(), text.end(), IsBlank), text.end());
    return text;
}

bool EndsWith(std::u32string_view text, std::u32string_view end)
{
    return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

/// ".mp4" once where it stands twice.
void DropRepeatedExtension(std::u32string& name)
{
    const std::size_t dot = name.rfind(U'.');
    if (dot == std::u32string::npos) {
        return;
    }
    const std::u32string extension = name.substr(dot);
    while (name.size() > extension.size() &&
           EndsWith(std::u32string_view(name).substr(0, name.size() - extension.size()), extension)) {
        name.erase(name.size() - extension.size());
    }
}

/// "(1)", or the word that a file manager puts behind the name of a copy. Blanks are gone already.
void DropCopyMark(std::u32string& name)
{
    const std::size_t dot = std::min(name.rfind(U'.'), name.size());
    std::u32string stem = name.substr(0, dot);
    for (const std::u32string_view mark : {U"-copy", U"-kopie"}) {
        if (EndsWith(stem, mark)) {
            stem.erase(stem.size() - mark.size());
        }
    }
    const std::size_t open = stem.rfind(U'(');
    if (open != std::u32string::npos && open + 2 < stem.size() && stem.back() == U')' &&
        std::all_of(stem.begin() + static_cast<std::ptrdiff_t>(open) + 1, stem.end() - 1,
                    [](char32_t code) { return code >= '0' && code <= '9'; })) {
        stem.erase(open);
    }
    name = stem + name.substr(dot);
}

/// A name as a shell takes it, with the bytes spelled out that a terminal may not give back.
std::string ShellWord(std::string_view name)
{
    std::string word = "$'";
    for (const char byte : name) {
        const auto code = static_cast<unsigned char>(byte);
        if (code >= 0x20 && code < 0x7F && byte != '\'' && byte != '\\') {
            word += byte;
        } else {
            std::array<char, 5> text = {};
            std::snprintf(text.data(), text.size(), "\\%03o", static_cast<unsigned int>(code));
            word += text.data();
        }
    }
    return word + "'";
}

} // namespace

std::u32string LookAlikeKey(std::string_view name)
{
    std::u32string key = WithoutBlanks(WithoutCase(Decomposed(name)));
    DropRepeatedExtension(key);
    DropCopyMark(key);
    return key;
}

std::vector<std::u32string> LookAlikeKeys(std::string_view name)
{
    std::vector<std::u32string> keys = {LookAlikeKey(name)};
    const std::size_t dot = name.rfind('.');
    if (dot != std::string_view::npos && dot > 0 && name.substr(0, dot).find('.') != std::string_view::npos) {
        keys.push_back(LookAlikeKey(name.substr(0, dot)));
    }
    return keys;
}

std::string DescribeLookAlike(std::string_view wanted, std::string_view there)
{
    // From the smallest difference to the largest: each test leaves out more than the one before.
    const std::string isThere = Quoted(there) + " is there";
    const std::u32string left = Decomposed(wanted);
    const std::u32string right = Decomposed(there);
    if (left == right) {
        const bool separate = there.size() > wanted.size();
        return isThere + ", which looks the same, but writes " +
               (separate ? "its accents as characters of their own" : "each letter and its accent as one character") +
               "; rename it: mv -- " + ShellWord(there) + " " + ShellWord(wanted);
    }
    if (WithoutCase(left) == WithoutCase(right)) {
        return isThere + ", but upper and lower case count";
    }
    if (WithoutBlanks(WithoutCase(left)) == WithoutBlanks(WithoutCase(right))) {
        return isThere + ", but blanks count";
    }
    std::u32string once = WithoutBlanks(WithoutCase(right));
    const std::size_t size = once.size();
    DropRepeatedExtension(once);
    if (once.size() < size) {
        return isThere + ", with its extension twice";
    }
    if (LookAlikeKey(wanted) == LookAlikeKey(there)) {
        return isThere + ", under the name of a copy";
    }
    return isThere + ", with one more extension";
}
