#include "Tests/Fuzz/ScheduleModel.h"

#include <map>

namespace {

/// Calls `use` with the attributes that an element's fixed number of slots lets be seen.
template <typename Use>
void ForFirst(int slots, const char** attributes, Use use)
{
    for (; slots > 0 && *attributes != nullptr; --slots, attributes += 2) {
        use(std::string_view(attributes[0]), std::string_view(attributes[1]));
    }
}

} // namespace

void ScheduleModel::Start(const char* name, const char** attributes)
{
    const std::string_view element = name;
    if (element == "rsp") {
        if (attributes[0] == nullptr) {
            policy_.bError = true;
        } else if (std::string_view(attributes[0]) == "state" && std::string_view(attributes[1]) == "ok") {
            policy_.bError = false;
        }
    } else if (element == "policy") {
        ForFirst(5, attributes, [this](std::string_view attribute, std::string_view value) {
            if (attribute == "period") {
                policy_.nCheckPeriod = IntOf(value);
            }
        });
    } else if (element == "project") {
        ForFirst(5, attributes, [this](auto attribute, auto value) { StartProject(attribute, value); });
    } else if (element == "schedule") {
        ForFirst(2, attributes, [this](std::string_view attribute, std::string_view value) {
            if (attribute == "start_time") {
                schedule_.stStartTime = TimeOf(value);
            } else if (attribute == "end_time") {
                schedule_.stEndTime = TimeOf(value);
            }
        });
    } else if (element == "item") {
        ForFirst(2, attributes, [this](auto attribute, auto value) { StartItem(attribute, value); });
    } else if (element == "name") {
        child_ = Child::Name;
    } else if (element == "size") {
        child_ = Child::Size;
    } else if (element == "format") {
        child_ = Child::Format;
    } else if (element == "rech_info") {
        ForFirst(10, attributes, [this](auto attribute, auto value) { StartNetwork(attribute, value); });
    }
}

void ScheduleModel::StartItem(std::string_view attribute, std::string_view value)
{
    if (attribute == "id") {
        item_.strID = value;
    } else if (attribute == "order") {
        item_.nOrder = IntOf(value);
    }
}

void ScheduleModel::StartProject(std::string_view attribute, std::string_view value)
{
    if (attribute == "id") {
        policy_.nProjectID = UnsignedOf(value);
    } else if (attribute == "version") {
        policy_.strVersion = value;
    } else if (attribute == "item_count") {
        policy_.nItemCount = IntOf(value);
    } else if (attribute == "total_size") {
        policy_.nTotalSize = UnsignedOf(value);
    } else if (attribute == "expiration") {
        policy_.stExpiration = DateOf(value);
    }
}

void ScheduleModel::StartNetwork(std::string_view attribute, std::string_view value)
{
    static const std::map<std::string_view, int _VQMPolicy::*> kNumbers = {
        {"NumOfPlayer", &_VQMPolicy::NumOfPlayer},
        {"IPType", &_VQMPolicy::IPType},
        {"TypeOfNetwork", &_VQMPolicy::TypeOfNetwork},
        {"nImageDuration", &_VQMPolicy::nImageDuration},
    };
    static const std::map<std::string_view, std::string _VQMPolicy::*> kTexts = {
        {"IPAddrOfMaster", &_VQMPolicy::IPAddrOfMaster},
        {"IPAddr", &_VQMPolicy::IPAddr},
        {"SubnetMask", &_VQMPolicy::SubnetMask},
        {"Gateway", &_VQMPolicy::Gateway},
        {"WirelessGroupName", &_VQMPolicy::WirelessGroupName},
    };
    const auto number = kNumbers.find(attribute);
    const auto text = kTexts.find(attribute);
    if (attribute == "IsMaster") {
        policy_.IsMaster = IntOf(value) == 1;
    } else if (number != kNumbers.end()) {
        policy_.*number->second = IntOf(value);
    } else if (text != kTexts.end()) {
        policy_.*text->second = value;
    }
}

void ScheduleModel::End(const char* name)
{
    const std::string_view element = name;
    if (element == "item") {
        schedule_.listContents.push_back(item_);
        item_ = {};
        child_ = Child::None;
    } else if (element == "schedule") {
        policy_.listSchedule.push_back(schedule_);
        schedule_ = {};
    } else if ((element == "name" && child_ == Child::Name) || (element == "size" && child_ == Child::Size)) {
        child_ = Child::None;
    } else if (element == "format" && child_ == Child::Format) {
        item_.strName += "." + item_.strFormat;
        child_ = Child::None;
    }
}

void ScheduleModel::Text(std::string_view piece)
{
    switch (child_) {
    case Child::Name:
        item_.strName += piece;
        break;
    case Child::Size:
        item_.nSize = UnsignedOf(piece); // the last piece's alone
        break;
    case Child::Format:
        item_.strFormat += piece;
        break;
    case Child::None:
        break;
    }
}
