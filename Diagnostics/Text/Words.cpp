#include "Diagnostics/Text/Words.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace {

constexpr std::size_t kMaxQuoted = 60;

bool IsContinuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

} // namespace

bool Contains(const std::vector<std::string>& names, const std::string& name)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

std::string Quoted(std::string_view text)
{
    return "'" + std::string(text) + "'";
}

std::string QuotedShort(std::string_view text)
{
    if (text.size() <= kMaxQuoted) {
        return Quoted(text);
    }
    std::size_t end = kMaxQuoted;
    while (end > 0 && IsContinuation(text[end])) {
        --end;
    }
    return "'" + std::string(text.substr(0, end)) + "...'";
}

std::string QuotedList(const std::vector<std::string>& texts)
{
    std::string list;
    for (std::size_t index = 0; index < texts.size(); ++index) {
        if (index > 0) {
            list += index + 1 == texts.size() ? " and " : ", ";
        }
        list += Quoted(texts[index]);
    }
    return list;
}

std::string Counted(std::uint64_t number, const std::string& what)
{
    return std::to_string(number) + " " + what + (number == 1 ? "" : "s");
}

std::string TwoDigits(long long number)
{
    return (number >= 0 && number < 10 ? "0" : "") + std::to_string(number);
}

std::string BytesText(std::uint64_t bytes)
{
    constexpr std::array<const char*, 6> kUnits = {"kB", "MB", "GB", "TB", "PB", "EB"};
    constexpr double kStep = 1000.0;
    if (bytes < 1000) {
        return Counted(bytes, "byte");
    }
    double amount = static_cast<double>(bytes) / kStep;
    std::size_t unit = 0;
    // What would be rounded to 1000 is 1 of the next unit.
    while (amount >= kStep - 0.05 && unit + 1 < kUnits.size()) {
        amount /= kStep;
        ++unit;
    }
    std::array<char, 32> text = {};
    std::snprintf(text.data(), text.size(), "%.1f %s", amount, kUnits[unit]);
    return text.data();
}
