#pragma once

#include <string>
#include <string_view>
#include <vector>

/// What names have in common that a person may take for each other: it leaves out case, blanks, how accents
/// are written, an extension that stands twice, and the number that a copy gets.
std::u32string LookAlikeKey(std::string_view name);

/// The keys under which a file that is there may be looked for: its own, and that of its name without the
/// last extension, for one that was added.
std::vector<std::u32string> LookAlikeKeys(std::string_view name);

/// "'LOGO.JPG' is there, but upper and lower case count": how a name that is there differs from the one that
/// is wanted, and how to rename it where that is hard to type.
std::string DescribeLookAlike(std::string_view wanted, std::string_view there);
