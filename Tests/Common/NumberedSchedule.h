#pragma once

#include <string>

#include <gmock/gmock.h>

#include "Data/VQMScheduleRecords.h"
#include "Tests/Common/StoredDemo.h"

// Schedules that can be told apart in each of their fields, so that a policy made of two shows.

/// A schedule of number `number`, 1000 to 9999. Its contents have no bytes: they need not be there.
inline std::string NumberedSchedule(int number)
{
    const std::string text = std::to_string(number);
    std::string xml = "<rsp state='ok'><policy period='" + text + "'/><project id='" + text + "' version='" + text +
                      "' item_count='" + text + "' total_size='" + text + "' expiration='" + text + "-01-01'/>";
    const std::vector<Content> contents(static_cast<std::size_t>(number % 4 + 1), {"c" + text, "x", 0});
    for (int schedules = number % 3 + 1; schedules > 0; --schedules) {
        xml += ScheduleElement(contents);
    }
    return xml + "<rech_info IsMaster='1' NumOfPlayer='" + text + "' IPAddrOfMaster='" + text + "' IPType='" + text +
           "' IPAddr='" + text + "' SubnetMask='" + text + "' Gateway='" + text + "' TypeOfNetwork='" + text +
           "' WirelessGroupName='" + text + "' nImageDuration='" + text + "'/></rsp>";
}

/// The policy is one numbered schedule in all its fields, or what clearing leaves of one, or of none.
inline void ExpectWhole(const _VQMPolicy& policy)
{
    // The fields that clearing keeps.
    const int number = policy.nCheckPeriod;
    EXPECT_EQ(policy.strVersion, number != 0 ? std::to_string(number) : "");
    EXPECT_EQ(policy.stExpiration.nYear, number);
    EXPECT_EQ(policy.IPType, number);

    const bool cleared = policy.bError;
    const int rest = cleared ? 0 : number;
    const std::string text = cleared ? "" : std::to_string(number);
    EXPECT_EQ(policy.nProjectID, static_cast<uVQMINT64>(rest));
    EXPECT_EQ(policy.nItemCount, rest);
    EXPECT_EQ(policy.nTotalSize, static_cast<uVQMINT64>(rest));
    EXPECT_EQ(policy.IsMaster, !cleared);
    EXPECT_EQ(policy.NumOfPlayer, rest);
    EXPECT_EQ(policy.IPAddrOfMaster, text);
    EXPECT_EQ(policy.IPAddr, text);
    EXPECT_EQ(policy.SubnetMask, text);
    EXPECT_EQ(policy.Gateway, text);
    EXPECT_EQ(policy.TypeOfNetwork, rest);
    EXPECT_EQ(policy.WirelessGroupName, text);
    EXPECT_EQ(policy.nImageDuration, rest);
    EXPECT_EQ(policy.listSchedule.size(), cleared ? 0U : static_cast<std::size_t>(number % 3 + 1));
    for (const _VQMSchdule& schedule : policy.listSchedule) {
        EXPECT_EQ(schedule.listContents.size(), static_cast<std::size_t>(number % 4 + 1));
        for (const _VQMContentInfo& content : schedule.listContents) {
            EXPECT_EQ(content.strName, "c" + text + ".x");
        }
    }
}
