#include "Diagnostics/Lint/AddressRules.h"
#include "Diagnostics/Text/Words.h"

#include <arpa/inet.h>
#include <netinet/in.h>

namespace lint {

namespace {

constexpr char kEffect[] = "the TV keeps the text as it is";

bool IsIPv6(const std::string& text)
{
    in6_addr address = {};
    return inet_pton(AF_INET6, text.c_str(), &address) == 1;
}

std::optional<Problem> JudgeEmpty(const std::string& attribute, const std::string& text)
{
    if (!text.empty()) {
        return std::nullopt;
    }
    return Problem{Rule::kEmptyAddress, attribute + " is empty", "an address, or no attribute", kEffect};
}

/// A mask is ones, then zeros: its complement is one less than a power of two.
bool IsMask(std::uint32_t mask)
{
    const std::uint32_t zeros = ~mask;
    return (zeros & (zeros + 1U)) == 0;
}

} // namespace

std::optional<std::uint32_t> ParseIPv4(const std::string& text)
{
    in_addr address = {};
    if (inet_pton(AF_INET, text.c_str(), &address) != 1) {
        return std::nullopt;
    }
    return ntohl(address.s_addr);
}

std::optional<Problem> JudgeAddress(const std::string& attribute, const std::string& text)
{
    if (std::optional<Problem> empty = JudgeEmpty(attribute, text)) {
        return empty;
    }
    if (ParseIPv4(text) || IsIPv6(text)) {
        return std::nullopt;
    }
    return Problem{Rule::kNotAnAddress, attribute + " " + QuotedShort(text) + " is not an address",
                   "four numbers up to 255, such as 192.168.0.10", kEffect};
}

std::optional<Problem> JudgeSubnetMask(const std::string& attribute, const std::string& text)
{
    if (std::optional<Problem> empty = JudgeEmpty(attribute, text)) {
        return empty;
    }
    const std::optional<std::uint32_t> mask = ParseIPv4(text);
    if (mask && IsMask(*mask)) {
        return std::nullopt;
    }
    return Problem{Rule::kNotASubnetMask, attribute + " " + QuotedShort(text) + " is not a subnet mask",
                   "a mask of ones, then zeros, such as 255.255.255.0", kEffect};
}

} // namespace lint
