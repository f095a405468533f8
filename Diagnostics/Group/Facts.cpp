#include "Diagnostics/Group/Facts.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <optional>
#include <utility>

#include <arpa/inet.h>

#include "Diagnostics/Lint/AddressRules.h"
#include "Diagnostics/Text/Words.h"

namespace group {

namespace {

std::string ValueOf(const _VQMPolicy& policy, Field field)
{
    switch (field) {
    case Field::kProjectId:
        return std::to_string(policy.nProjectID);
    case Field::kVersion:
        return policy.strVersion;
    case Field::kIsMaster:
        return policy.IsMaster ? "1" : "0";
    case Field::kPlayers:
        return std::to_string(policy.NumOfPlayer);
    case Field::kMasterAddress:
        return policy.IPAddrOfMaster;
    case Field::kAddress:
        return policy.IPAddr;
    case Field::kSubnetMask:
        return policy.SubnetMask;
    case Field::kCount:
        break;
    }
    return "";
}

/// One form for each IPv6 address, however it is written; an IPv4 address has only one.
std::string Normal(const std::string& address)
{
    in6_addr parsed = {};
    if (inet_pton(AF_INET6, address.c_str(), &parsed) != 1) {
        return address;
    }
    std::array<char, INET6_ADDRSTRLEN> text = {};
    inet_ntop(AF_INET6, &parsed, text.data(), text.size());
    return text.data();
}

/// "project id '1001'"
std::string Text(Field field, const Facts& facts)
{
    return std::string(field == Field::kProjectId ? "project " : "") + NameOf(field) + " " +
           QuotedShort(facts.Value(field));
}

class Comparison {
public:
    Comparison(const std::vector<Facts>& all, DifferenceList& differences) : all_(all), differences_(differences) {}

    void Run()
    {
        CompareMasters();
        CompareWithFirst(Field::kProjectId, "project-differs", "the same project in all documents");
        CompareWithFirst(Field::kVersion, "version-differs", "the same version in all documents");
        ComparePlayers();
        CompareMasterAddresses();
        CompareAddresses();
        CompareSubnets();
    }

private:
    /// `other` may be null: then no place stands for what the document is held against.
    void Add(std::size_t document, Field field, const Facts* other, Finding finding)
    {
        std::optional<Diagnostic> there;
        if (other != nullptr) {
            finding.there = Text(field, *other);
            there = other->At(field);
        }
        differences_.Add(document, all_[document].At(field), std::move(there), std::move(finding));
    }

    void CompareMasters()
    {
        for (std::size_t document = 0; document < all_.size(); ++document) {
            if (!all_[document].isMaster) {
                continue;
            }
            if (master_) {
                several_ = true;
                Add(document, Field::kIsMaster, &all_[*master_],
                    {"several-masters", "a second master", "", "exactly one document with IsMaster='1'"});
            } else {
                master_ = document;
            }
        }
        if (!master_) {
            // No document is at fault alone: the first one stands for all.
            Add(0, Field::kIsMaster, &all_[1],
                {"no-master", "no document is the master's", "", "exactly one document with IsMaster='1'"});
        }
    }

    void CompareWithFirst(Field field, const char* id, const char* expected)
    {
        for (std::size_t document = 1; document < all_.size(); ++document) {
            if (all_[document].Value(field) != all_[0].Value(field)) {
                Add(document, field, &all_[0],
                    {id, Text(field, all_[document]) + " differs from " + QuotedShort(all_[0].Value(field)), "",
                     expected});
            }
        }
    }

    void ComparePlayers()
    {
        const auto isRight = [this](const Facts& each) {
            return each.players >= 0 && static_cast<std::size_t>(each.players) == all_.size();
        };
        // A document with the right number, if there is one, is shown beside each wrong one.
        const auto right = std::find_if(all_.begin(), all_.end(), isRight);
        const Facts* const other = right == all_.end() ? nullptr : &*right;
        for (std::size_t document = 0; document < all_.size(); ++document) {
            if (!isRight(all_[document])) {
                Add(document, Field::kPlayers, other,
                    {"player-count",
                     Text(Field::kPlayers, all_[document]) + ", but there are " + std::to_string(all_.size()) +
                         " documents",
                     "", "the number of TVs, and the document of each"});
            }
        }
    }

    void CompareMasterAddresses()
    {
        if (!master_ || several_) {
            CompareWithFirst(Field::kMasterAddress, "master-address-differs", "the same master in all documents");
            return;
        }
        const Facts& master = all_[*master_];
        for (std::size_t document = 0; document < all_.size(); ++document) {
            const Facts& each = all_[document];
            if (Normal(each.Value(Field::kMasterAddress)) == Normal(master.Value(Field::kAddress))) {
                continue;
            }
            differences_.Add(document, each.At(Field::kMasterAddress), master.At(Field::kAddress),
                             {"master-address-wrong",
                              Text(Field::kMasterAddress, each) + " is not the master's address",
                              "the master has " + Text(Field::kAddress, master), "the master's IPAddr"});
        }
    }

    void CompareAddresses()
    {
        std::map<std::string, std::size_t> seen;
        for (std::size_t document = 0; document < all_.size(); ++document) {
            const std::string& address = all_[document].Value(Field::kAddress);
            if (address.empty()) {
                Add(document, Field::kAddress, nullptr,
                    {"address-missing", "there is no IPAddr", "", "an address for each TV"});
                continue;
            }
            const auto [first, isNew] = seen.emplace(Normal(address), document);
            if (!isNew) {
                Add(document, Field::kAddress, &all_[first->second],
                    {"address-twice", Text(Field::kAddress, all_[document]) + " is that of another TV too", "",
                     "a different address for each TV"});
            }
        }
    }

    /// Leaves out texts that are not an address or a mask: the linter reports them.
    void CompareSubnets()
    {
        const std::optional<std::uint32_t> firstMask = lint::ParseIPv4(all_[0].Value(Field::kSubnetMask));
        const std::optional<std::uint32_t> first = lint::ParseIPv4(all_[0].Value(Field::kAddress));
        for (std::size_t document = 1; document < all_.size(); ++document) {
            const std::optional<std::uint32_t> mask = lint::ParseIPv4(all_[document].Value(Field::kSubnetMask));
            const std::optional<std::uint32_t> address = lint::ParseIPv4(all_[document].Value(Field::kAddress));
            if (mask && firstMask && *mask != *firstMask) {
                Add(document, Field::kSubnetMask, &all_[0],
                    {"subnet-mask-differs",
                     Text(Field::kSubnetMask, all_[document]) + " differs from " +
                         QuotedShort(all_[0].Value(Field::kSubnetMask)),
                     "", "one subnet for all TVs"});
            } else if (mask && firstMask && address && first && (*address & *mask) != (*first & *firstMask)) {
                Add(document, Field::kAddress, &all_[0],
                    {"subnet-differs",
                     Text(Field::kAddress, all_[document]) + " is outside the subnet of " +
                         QuotedShort(all_[0].Value(Field::kAddress)),
                     "", "one subnet for all TVs"});
            }
        }
    }

    const std::vector<Facts>& all_;
    DifferenceList& differences_;
    std::optional<std::size_t> master_; ///< the first
    bool several_ = false;
};

} // namespace

Facts::Facts(const Document& document) : isMaster(document.Policy().IsMaster), players(document.Policy().NumOfPlayer)
{
    for (std::size_t index = 0; index < kFields; ++index) {
        values[index] = ValueOf(document.Policy(), static_cast<Field>(index));
        places[index] = document.At(static_cast<Field>(index));
    }
}

void CompareFacts(const std::vector<Facts>& all, DifferenceList& differences)
{
    Comparison(all, differences).Run();
}

} // namespace group
