#include "Diagnostics/Lint/NumberRules.h"

#include <algorithm>

#include "Diagnostics/Lint/TvConversions.h"
#include "Diagnostics/Text/Words.h"

namespace lint {

namespace {

/// What the TV reads, written out.
std::string Taken(ValueKind kind, const std::string& text)
{
    return kind == ValueKind::kUnsigned ? std::to_string(tv::Unsigned(text)) : std::to_string(tv::Integer(text));
}

bool HasOnlyDigits(ValueKind kind, std::string_view text)
{
    if (kind != ValueKind::kUnsigned && !text.empty() && text.front() == '-') {
        text.remove_prefix(1);
    }
    return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

/// Most numbers are short and plain, and then there is nothing to convert.
bool IsPlain(const std::string& text)
{
    constexpr std::size_t kSafeDigits = 9; // never too many for 32 bits
    return !text.empty() && text.size() <= kSafeDigits && text.find_first_not_of("0123456789") == std::string::npos;
}

/// The shortest way to write the number.
std::string Shortest(const std::string& text)
{
    const bool negative = text.front() == '-';
    std::string digits = text.substr(negative ? 1 : 0);
    digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size() - 1));
    return (negative && digits != "0" ? "-" : "") + digits;
}

/// Whether the TV reads the number as it is written.
bool IsSoundNumber(ValueKind kind, const std::string& text)
{
    return IsPlain(text) || (HasOnlyDigits(kind, text) && Shortest(text) == Taken(kind, text));
}

} // namespace

std::optional<Problem> JudgeNumber(const std::string& subject, ValueKind kind, const std::string& text)
{
    if (kind != ValueKind::kMaster && IsPlain(text)) {
        return std::nullopt;
    }
    const std::string what = subject + " " + QuotedShort(text);
    const std::string effect = "the TV reads " + Taken(kind, text);
    if (!HasOnlyDigits(kind, text)) {
        return Problem{Rule::kNumberNotDigits, what + (text.empty() ? " is empty" : " is not digits only"),
                       "a decimal number without anything around it", effect};
    }
    if (!IsSoundNumber(kind, text)) {
        return Problem{Rule::kNumberWraps, what + " is too large",
                       kind == ValueKind::kUnsigned ? "a number up to 18446744073709551615"
                                                    : "a number between -2147483648 and 2147483647",
                       effect};
    }
    if (kind == ValueKind::kCount && tv::Integer(text) < 0) {
        return Problem{Rule::kNegativeNumber, what + " is negative", "0 or more", effect};
    }
    if (kind == ValueKind::kMaster && tv::Integer(text) != 0 && tv::Integer(text) != 1) {
        return Problem{Rule::kIsMasterValue, what + " is neither 0 nor 1", "1 for the master, 0 for any other player",
                       "the TV is not the master"};
    }
    return std::nullopt;
}

} // namespace lint
