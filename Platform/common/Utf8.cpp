#include "Platform/common/Utf8.h"

#include <algorithm>
#include <iterator>

#include <boost/locale/utf.hpp>

namespace platform {

namespace {

using Utf8 = boost::locale::utf::utf_traits<char>;

} // namespace

CodePoint FirstCodePoint(std::string_view text)
{
    if (text.empty()) {
        return {};
    }
    const char* next = text.data();
    const boost::locale::utf::code_point value = Utf8::decode(next, text.data() + text.size());
    if (value == boost::locale::utf::illegal || value == boost::locale::utf::incomplete) {
        return {0, 0, value == boost::locale::utf::incomplete};
    }
    return {static_cast<char32_t>(value), static_cast<std::size_t>(next - text.data()), false};
}

std::size_t CountCodePoints(std::string_view text)
{
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char byte) { return !Utf8::is_trail(byte); }));
}

void AppendCodePoint(std::string& text, char32_t value)
{
    Utf8::encode(static_cast<boost::locale::utf::code_point>(value), std::back_inserter(text));
}

} // namespace platform
