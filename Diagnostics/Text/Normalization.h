#pragma once

#include <optional>
#include <string>
#include <string_view>

/// The text with each accent as a character of its own, and the accents of a letter in one order: equal for
/// texts that look the same. Bytes that are not UTF-8 stay, each as one unit.
std::u32string Decomposed(std::string_view text);

/// Two letters of one text, of which one is written with its accent and the other with an accent behind it.
struct MixedForms {
    std::string composed; ///< "ü" as one character
    std::string separate; ///< "é" as two
};

/// Nothing when the text writes all letters in one way.
std::optional<MixedForms> FindMixedForms(std::string_view text);
