#include "Tests/Common/ContentCheckFixture.h"

namespace {

template <auto mutex>
struct Expose {
    friend boost::mutex& Exposed(CVQMSyncDemoMonitor& monitor) { return monitor.*mutex; }
};
template struct Expose<&CVQMSyncDemoMonitor::m_policyMutex>;
boost::mutex& Exposed(CVQMSyncDemoMonitor& monitor);

} // namespace

boost::mutex& MutexOf(CVQMSyncDemoMonitor& monitor)
{
    return Exposed(monitor);
}

std::string Xml(const std::vector<std::vector<Content>>& schedules, const std::string& rechInfo)
{
    std::string xml = "<rsp state='ok'><policy period='30'/>"
                      "<project id='1001' version='1.2' item_count='2' total_size='3' expiration='2016-12-31'/>";
    for (const auto& contents : schedules) {
        xml += ScheduleElement(contents);
    }
    return xml + rechInfo + "</rsp>";
}

void ContentCheck::ExpectGoodPolicy()
{
    const _VQMPolicy policy = Current();
    EXPECT_FALSE(policy.bError);
    EXPECT_EQ(policy.nCheckPeriod, 30);
    EXPECT_EQ(policy.nProjectID, 1001U);
    EXPECT_EQ(policy.strVersion, "1.2");
    EXPECT_EQ(policy.nItemCount, 2);
    EXPECT_EQ(policy.nTotalSize, 3U);
    EXPECT_EQ(policy.stExpiration.nYear, 2016);
    ASSERT_EQ(policy.listSchedule.size(), 1U);
    EXPECT_EQ(policy.listSchedule.front().stStartTime.nHour, 9);
    ASSERT_EQ(policy.listSchedule.front().listContents.size(), 1U);
    EXPECT_EQ(policy.listSchedule.front().listContents.front().strName, "intro.mp4");
    EXPECT_TRUE(policy.IsMaster);
    EXPECT_EQ(policy.NumOfPlayer, 2);
    EXPECT_EQ(policy.IPAddrOfMaster, "192.168.0.10");
    EXPECT_EQ(policy.IPType, 3);
    EXPECT_EQ(policy.IPAddr, "192.168.0.11");
    EXPECT_EQ(policy.SubnetMask, "255.255.255.0");
    EXPECT_EQ(policy.Gateway, "192.168.0.1");
    EXPECT_EQ(policy.TypeOfNetwork, 4);
    EXPECT_EQ(policy.WirelessGroupName, "100%s");
    EXPECT_EQ(policy.nImageDuration, 10);
}
