#include "Tests/Fuzz/TextOracle.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string>

namespace {

constexpr char kDigits[] = "0123456789";

std::string_view LeadingDigits(std::string_view text)
{
    return text.substr(0, std::min(text.find_first_not_of(kDigits), text.size()));
}

/// The low 64 bits of a decimal number of any length, each one the remainder of halving it as one
/// does on paper.
std::uint64_t LowBits(std::string_view digits)
{
    // 10^64 is a multiple of 2^64: what stands before the last 64 digits does not show.
    std::string number(digits.substr(digits.size() - std::min<std::size_t>(digits.size(), 64)));
    std::uint64_t bits = 0;
    for (int bit = 0; bit < 64; ++bit) {
        int rest = 0;
        for (char& digit : number) {
            const int dividend = rest * 10 + (digit - '0');
            digit = static_cast<char>('0' + dividend / 2);
            rest = dividend % 2;
        }
        bits |= static_cast<std::uint64_t>(rest) << bit;
    }
    return bits;
}

/// A number of digits only that is not above a limit of two digits.
std::optional<int> NumberUpTo(int limit, std::string_view text)
{
    if (text.empty() || LeadingDigits(text).size() != text.size()) {
        return std::nullopt;
    }
    text.remove_prefix(std::min(text.find_first_not_of('0'), text.size()));
    if (text.size() > 2) {
        return std::nullopt;
    }
    int number = 0;
    for (const char digit : text) {
        number = number * 10 + (digit - '0');
    }
    return number <= limit ? std::optional<int>(number) : std::nullopt;
}

} // namespace

int IntOf(std::string_view text)
{
    const bool negative = !text.empty() && text.front() == '-';
    const auto magnitude = static_cast<std::uint32_t>(LowBits(LeadingDigits(text.substr(negative ? 1 : 0))));
    return static_cast<int>(negative ? ~magnitude + 1 : magnitude);
}

uVQMINT64 UnsignedOf(std::string_view text)
{
    return LowBits(LeadingDigits(text));
}

double DoubleOf(std::string_view text)
{
    const bool negative = !text.empty() && text.front() == '-';
    text.remove_prefix(negative ? 1 : 0);

    std::string_view digits = LeadingDigits(text);
    text.remove_prefix(digits.size());
    double integer = 0.0;
    for (const char digit : digits) {
        integer = std::fma(integer, 10.0, digit - '0');
    }

    // Stored after each operation: each one is rounded on its own.
    volatile double fraction = 0.0;
    volatile double scale = 1.0;
    while (!text.empty() && text.front() == '.') {
        digits = LeadingDigits(text.substr(1));
        text.remove_prefix(1 + digits.size());
        for (const char digit : digits) {
            scale = scale * 0.1;
            fraction = fraction * 10.0;
            fraction = fraction + (digit - '0');
        }
        fraction = fraction * scale;
    }
    const double sum = integer + fraction;
    return negative ? -sum : sum;
}

_VQMTime TimeOf(std::string_view text)
{
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos) {
        return {};
    }
    const std::optional<int> hour = NumberUpTo(24, text.substr(0, colon));
    const std::string_view rest = text.substr(colon + 1);
    if (!hour || rest.size() < 2) {
        return {};
    }
    const std::size_t next = rest.find(':');
    const bool seconds = next != std::string_view::npos && next + 1 != rest.size();
    // Without a second colon the last character is lost, with one at the end it is the colon.
    const std::optional<int> minute = NumberUpTo(59, rest.substr(0, seconds ? next : rest.size() - 1));
    if (!minute) {
        return {};
    }
    _VQMTime time;
    time.nHour = *hour;
    time.nMinute = *minute;
    time.nSecond = seconds ? NumberUpTo(59, rest.substr(next + 1)).value_or(0) : 0;
    return time;
}

_VQMTime DateOf(std::string_view text)
{
    _VQMTime date;
    if (text.size() >= 10) {
        date.nYear = IntOf(text.substr(0, 4));
        date.nMonth = IntOf(text.substr(5, 2));
        date.nDay = IntOf(text.substr(8, 2));
    }
    return date;
}
