#include "Tests/Data/ScheduleFixture.h"

#include <sstream>

namespace {

/// The fields other than the schedules, always in the same number.
recorder::Lines Scalars(const _VQMPolicy& policy)
{
    std::ostringstream text;
    text << "bError=" << policy.bError << '\0';
    text << "nCheckPeriod=" << policy.nCheckPeriod << '\0';
    text << "nProjectID=" << policy.nProjectID << '\0';
    text << "strVersion=" << policy.strVersion << '\0';
    text << "nItemCount=" << policy.nItemCount << '\0';
    text << "nTotalSize=" << policy.nTotalSize << '\0';
    text << "stExpiration=" << Text(policy.stExpiration) << '\0';
    text << "IsMaster=" << policy.IsMaster << '\0';
    text << "NumOfPlayer=" << policy.NumOfPlayer << '\0';
    text << "IPAddrOfMaster=" << policy.IPAddrOfMaster << '\0';
    text << "IPType=" << policy.IPType << '\0';
    text << "IPAddr=" << policy.IPAddr << '\0';
    text << "SubnetMask=" << policy.SubnetMask << '\0';
    text << "Gateway=" << policy.Gateway << '\0';
    text << "TypeOfNetwork=" << policy.TypeOfNetwork << '\0';
    text << "WirelessGroupName=" << policy.WirelessGroupName << '\0';
    text << "nImageDuration=" << policy.nImageDuration << '\0';
    recorder::Lines lines;
    std::istringstream in(text.str());
    for (std::string line; std::getline(in, line, '\0');) {
        lines.push_back(line);
    }
    return lines;
}

} // namespace

std::string Text(const _VQMTime& time)
{
    std::ostringstream text;
    text << time.nYear << '-' << time.nMonth << '-' << time.nDay << ' ' << time.nHour << ':' << time.nMinute << ':'
         << time.nSecond << ' ' << time.nSpare;
    return text.str();
}

recorder::Lines Changes(const _VQMPolicy& policy)
{
    const recorder::Lines before = Scalars(_VQMPolicy());
    const recorder::Lines after = Scalars(policy);
    recorder::Lines changes;
    for (std::size_t i = 0; i < after.size(); ++i) {
        if (after[i] != before[i]) {
            changes.push_back(after[i]);
        }
    }
    for (const _VQMSchdule& schedule : policy.listSchedule) {
        changes.push_back("schedule " + Text(schedule.stStartTime) + " to " + Text(schedule.stEndTime));
        for (const _VQMContentInfo& item : schedule.listContents) {
            changes.push_back("item " + item.strID + '|' + item.strName + '|' + std::to_string(item.nSize) + '|' +
                              item.strFormat + '|' + std::to_string(item.nOrder));
        }
    }
    return changes;
}

std::string ScheduleLine(const std::string& function, const std::string& message)
{
    return recorder::LogOf(nullptr, "VQMScheduleContainer.cpp").Debug(function, message);
}

recorder::Lines ScheduleLines(const std::string& function, const std::vector<std::string>& messages)
{
    recorder::Lines lines;
    for (const std::string& message : messages) {
        lines.push_back(ScheduleLine(function, message));
    }
    return lines;
}
