#include "Platform/common/CharacterClass.h"

#include <algorithm>
#include <iterator>

#include <boost/spirit/home/support/char_encoding/unicode/query.hpp>

namespace platform {

namespace {

namespace ucd = boost::spirit::ucd;

struct Range {
    char32_t first;
    char32_t last;
};

/// The blocks of East Asian writing and of pictures. Boost has the categories of characters, but not their
/// widths.
constexpr Range kWide[] = {
    {0x1100, 0x115f},   {0x2e80, 0x303e},   {0x3041, 0xa4cf},   {0xa960, 0xa97c}, {0xac00, 0xd7a3},
    {0xf900, 0xfaff},   {0xfe30, 0xfe6f},   {0xff00, 0xff60},   {0xffe0, 0xffe6}, {0x1f300, 0x1f64f},
    {0x1f680, 0x1f6ff}, {0x1f900, 0x1f9ff}, {0x20000, 0x3fffd},
};

int CategoryOf(char32_t character)
{
    return static_cast<int>(ucd::get_category(character));
}

} // namespace

bool IsPrintable(char32_t character)
{
    switch (CategoryOf(character)) {
    case ucd::properties::control:
    case ucd::properties::format:
    case ucd::properties::surrogate:
        return false;
    default:
        return true; // an unassigned one may have a meaning in a newer Unicode
    }
}

bool IsWide(char32_t character)
{
    return std::any_of(std::begin(kWide), std::end(kWide),
                       [=](const Range& range) { return character >= range.first && character <= range.last; });
}

bool IsWithoutWidth(char32_t character)
{
    const int category = CategoryOf(character);
    return category == ucd::properties::nonspacing_mark || category == ucd::properties::enclosing_mark ||
           category == ucd::properties::format;
}

} // namespace platform
