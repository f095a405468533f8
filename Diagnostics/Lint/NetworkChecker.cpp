#include "Diagnostics/Lint/NetworkChecker.h"

#include <cstdint>
#include <optional>

#include "Diagnostics/Lint/AddressRules.h"
#include "Diagnostics/Lint/TvConversions.h"
#include "Diagnostics/Text/Words.h"

namespace lint {

namespace {

constexpr char kEffect[] = "the TV keeps the addresses as they are";

std::string ValueOf(const StartTag& tag, const char* name)
{
    const std::optional<std::size_t> index = tag.Find(name);
    return index ? tag.AttributeValue(*index) : "";
}

void CheckGateway(const StartTag& tag, Reporter& reporter)
{
    const std::optional<std::size_t> index = tag.Find("Gateway");
    const std::string own = ValueOf(tag, "IPAddr");
    const std::string maskText = ValueOf(tag, "SubnetMask");
    const std::optional<std::uint32_t> mask = ParseIPv4(maskText);
    const std::optional<std::uint32_t> address = ParseIPv4(own);
    const std::optional<std::uint32_t> gateway = ParseIPv4(ValueOf(tag, "Gateway"));
    if (!mask || JudgeSubnetMask("", maskText) || !address || !gateway || (*address & *mask) == (*gateway & *mask)) {
        return;
    }
    reporter.Report(tag.ValuePlace(*index), {Rule::kGatewayOutsideSubnet,
                                             "Gateway " + QuotedShort(tag.AttributeValue(*index)) +
                                                 " is outside the subnet of IPAddr " + QuotedShort(own),
                                             "an address in the subnet of the mask " + QuotedShort(maskText), kEffect});
}

void CheckMaster(const StartTag& tag, Reporter& reporter)
{
    const std::optional<std::size_t> master = tag.Find("IPAddrOfMaster");
    const std::optional<std::size_t> own = tag.Find("IPAddr");
    if (!master || !own || tv::Integer(ValueOf(tag, "IsMaster")) != 1) {
        return;
    }
    const std::string masterText = tag.AttributeValue(*master);
    const std::string ownText = tag.AttributeValue(*own);
    if (masterText == ownText || masterText.empty() || ownText.empty()) {
        return;
    }
    reporter.Report(tag.ValuePlace(*master),
                    {Rule::kMasterNotOwnAddress,
                     "this player is the master, but IPAddrOfMaster " + QuotedShort(masterText) +
                         " is not its IPAddr " + QuotedShort(ownText),
                     "the same address in both, or IsMaster='0'",
                     "the TV counts itself as the master and keeps both addresses"});
}

} // namespace

void CheckNetwork(const StartTag& tag, Reporter& reporter)
{
    CheckGateway(tag, reporter);
    CheckMaster(tag, reporter);
}

} // namespace lint
