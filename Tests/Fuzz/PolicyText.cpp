#include "Tests/Fuzz/PolicyText.h"

#include <sstream>

namespace {

class Description {
public:
    explicit Description(const _VQMPolicy& policy)
    {
        Add("bError", policy.bError);
        Add("period", policy.nCheckPeriod);
        Add("id", policy.nProjectID);
        Add("version", policy.strVersion);
        Add("item_count", policy.nItemCount);
        Add("total_size", policy.nTotalSize);
        Add("expiration", policy.stExpiration);
        for (const _VQMSchdule& schedule : policy.listSchedule) {
            Add("start_time", schedule.stStartTime);
            Add("end_time", schedule.stEndTime);
            for (const _VQMContentInfo& item : schedule.listContents) {
                Add("item", item.strID);
                Add("order", item.nOrder);
                Add("name", item.strName);
                Add("size", item.nSize);
                Add("format", item.strFormat);
            }
        }
        Add("IsMaster", policy.IsMaster);
        Add("NumOfPlayer", policy.NumOfPlayer);
        Add("IPAddrOfMaster", policy.IPAddrOfMaster);
        Add("IPType", policy.IPType);
        Add("IPAddr", policy.IPAddr);
        Add("SubnetMask", policy.SubnetMask);
        Add("Gateway", policy.Gateway);
        Add("TypeOfNetwork", policy.TypeOfNetwork);
        Add("WirelessGroupName", policy.WirelessGroupName);
        Add("nImageDuration", policy.nImageDuration);
    }

    std::string Text() const { return text_.str(); }

private:
    template <typename Value>
    void Add(const char* name, const Value& value)
    {
        text_ << name << ' ' << value << '\n';
    }

    void Add(const char* name, const std::string& value)
    {
        text_ << name << " (" << value.size() << ") " << value << '\n';
    }

    void Add(const char* name, const _VQMTime& time) { Add(name, Describe(time)); }

    std::ostringstream text_;
};

} // namespace

std::string Describe(const _VQMPolicy& policy)
{
    return Description(policy).Text();
}

std::string Describe(const _VQMTime& time)
{
    std::ostringstream text;
    text << time.nYear << '-' << time.nMonth << '-' << time.nDay << ' ' << time.nHour << ':' << time.nMinute << ':'
         << time.nSecond << ' ' << time.nSpare;
    return text.str();
}
