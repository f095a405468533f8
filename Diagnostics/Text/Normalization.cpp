#include "Diagnostics/Text/Normalization.h"

#include <algorithm>
#include <iterator>

#include "Diagnostics/Text/CanonicalPairs.h"
#include "Platform/common/Utf8.h"

namespace {

/// Units for bytes that are not UTF-8: no character has these codes.
constexpr char32_t kBytes = 0x110000;

// Korean syllables are numbered by their two or three parts.
constexpr char32_t kSyllables = 0xAC00;
constexpr char32_t kSyllableCount = 11172;
constexpr char32_t kLeading = 0x1100;
constexpr char32_t kVowels = 0x1161;
constexpr char32_t kTrailing = 0x11A7;
constexpr char32_t kVowelCount = 21;
constexpr char32_t kTrailingCount = 28;

const CanonicalPair* FindPair(char32_t composed)
{
    const auto* const found =
        std::lower_bound(std::begin(kCanonicalPairs), std::end(kCanonicalPairs), composed,
                         [](const CanonicalPair& pair, char32_t code) { return pair.composed < code; });
    return found != std::end(kCanonicalPairs) && found->composed == composed ? found : nullptr;
}

bool IsPair(char32_t first, char32_t second)
{
    return std::any_of(std::begin(kCanonicalPairs), std::end(kCanonicalPairs),
                       [=](const CanonicalPair& pair) { return pair.first == first && pair.second == second; });
}

/// Accents that stand behind their letter. Japanese has two of its own.
bool IsMark(char32_t code)
{
    return (code >= 0x300 && code < 0x370) || (code >= 0x1AB0 && code < 0x1B00) || (code >= 0x1DC0 && code < 0x1E00) ||
           code == 0x3099 || code == 0x309A;
}

void AppendDecomposed(std::u32string& text, char32_t code)
{
    if (code >= kSyllables && code < kSyllables + kSyllableCount) {
        const char32_t index = code - kSyllables;
        text += static_cast<char32_t>(kLeading + index / (kVowelCount * kTrailingCount));
        text += static_cast<char32_t>(kVowels + index / kTrailingCount % kVowelCount);
        if (index % kTrailingCount != 0) {
            text += static_cast<char32_t>(kTrailing + index % kTrailingCount);
        }
    } else if (const CanonicalPair* const pair = FindPair(code)) {
        AppendDecomposed(text, pair->first);
        text += pair->second;
    } else {
        text += code;
    }
}

std::u32string Units(std::string_view text)
{
    std::u32string units;
    units.reserve(text.size());
    while (!text.empty()) {
        const platform::CodePoint first = platform::FirstCodePoint(text);
        units += first.size == 0 ? kBytes + static_cast<unsigned char>(text.front()) : first.value;
        text.remove_prefix(std::max<std::size_t>(first.size, 1));
    }
    return units;
}

} // namespace

std::u32string Decomposed(std::string_view text)
{
    std::u32string decomposed;
    for (const char32_t unit : Units(text)) {
        AppendDecomposed(decomposed, unit);
    }
    for (auto mark = std::find_if(decomposed.begin(), decomposed.end(), IsMark); mark != decomposed.end();) {
        const auto end = std::find_if_not(mark, decomposed.end(), IsMark);
        std::sort(mark, end); // not Unicode's order, but one that is the same for both texts compared
        mark = std::find_if(end, decomposed.end(), IsMark);
    }
    return decomposed;
}

std::optional<MixedForms> FindMixedForms(std::string_view text)
{
    // Nearly every name is ASCII.
    if (std::none_of(text.begin(), text.end(), [](char byte) { return static_cast<unsigned char>(byte) >= 0x80U; })) {
        return std::nullopt;
    }
    MixedForms forms;
    char32_t last = 0;
    for (const char32_t unit : Units(text)) {
        if (forms.separate.empty() && IsMark(unit) && IsPair(last, unit)) {
            platform::AppendCodePoint(forms.separate, last);
            platform::AppendCodePoint(forms.separate, unit);
        } else if (forms.composed.empty() && unit >= 0x80 && FindPair(unit) != nullptr) {
            platform::AppendCodePoint(forms.composed, unit);
        }
        last = unit;
    }
    return forms.composed.empty() || forms.separate.empty() ? std::nullopt : std::optional<MixedForms>(forms);
}
