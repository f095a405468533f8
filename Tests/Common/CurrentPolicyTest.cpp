#include <string>
#include <vector>

#include "Tests/Common/ContentCheckFixture.h"

using recorder::Lines;
namespace fs = std::filesystem;

namespace {

TEST_F(ContentCheck, ParsingIntoATargetLeavesTheMonitorAlone)
{
    StoreGood();
    StoreSchedule(Xml({}, ""));
    _VQMPolicy policy;
    boost::mutex::scoped_lock lock(MutexOf(*monitor_)); // no lock is taken, or this would hang
    EXPECT_TRUE(monitor_->ParseStoredSchedule(kScheduleDirectory + "schedule.xml", &policy));
    lock.unlock();
    EXPECT_FALSE(policy.bError);
    EXPECT_EQ(policy.nProjectID, 1001U);
    EXPECT_TRUE(policy.listSchedule.empty());
    ExpectGoodPolicy();
    ExpectAnswers(true, true);
}

TEST_F(ContentCheck, ParsingWithoutATargetStoresThePolicyUnchecked)
{
    StoreSchedule(Xml({{{"missing", "mp4", 5}}}, kRechInfo));
    EXPECT_TRUE(monitor_->ParseStoredSchedule(kScheduleDirectory + "schedule.xml", nullptr));
    Lines expected = Join(Reading(), {ParserLine("ParseHttpResponse End !!!!\n")});
    expected.erase(expected.begin()); // no look at the directory
    EXPECT_EQ(TaggedLines(), expected);
    EXPECT_EQ(Current().listSchedule.size(), 1U);
    EXPECT_EQ(Current().IPAddr, "192.168.0.11");
    ExpectAnswers(false, false);
}

TEST_F(ContentCheck, ParsingThatFailsLeavesTheTarget)
{
    StoreGood();
    _VQMPolicy policy;
    policy.strVersion = "mine";
    EXPECT_FALSE(monitor_->ParseStoredSchedule("", &policy));
    EXPECT_EQ(recorder::Take(), Lines());
    StoreSchedule("<rsp state='ok'><project version='other'/>");
    for (const std::string& path :
         {kScheduleDirectory + "missing", kScheduleDirectory + "schedule.xml", kScheduleDirectory}) {
        EXPECT_FALSE(monitor_->ParseStoredSchedule(path, &policy));
        EXPECT_FALSE(monitor_->ParseStoredSchedule(path, nullptr));
    }
    EXPECT_EQ(policy.strVersion, "mine");
    ExpectGoodPolicy();
    ExpectAnswers(true, true);
}

TEST_F(ContentCheck, AScheduleOfManyReadUnitsIsReadWhole)
{
    std::vector<Content> contents(5000, Content{"nothing", "mp4", 0});
    StoreSchedule(Xml({contents}, kRechInfo));
    ASSERT_GT(fs::file_size(kScheduleDirectory + "schedule.xml"), 3U * 102400U);
    monitor_->CheckContents();
    ExpectAnswers(true, true);
    EXPECT_EQ(Current().listSchedule.front().listContents.size(), 5000U);
    EXPECT_EQ(Current().nImageDuration, 10);
}

TEST_F(ContentCheck, ClearingKeepsPeriodVersionExpirationAndIpType)
{
    StoreGood();
    monitor_->ClearCurrentPlolicy();
    EXPECT_EQ(recorder::Take(), Lines());
    const _VQMPolicy policy = Current();
    EXPECT_TRUE(policy.bError);
    EXPECT_TRUE(policy.listSchedule.empty());
    EXPECT_EQ(policy.IPAddrOfMaster, "");
    EXPECT_EQ(policy.IPAddr, "");
    EXPECT_EQ(policy.SubnetMask, "");
    EXPECT_EQ(policy.Gateway, "");
    EXPECT_EQ(policy.WirelessGroupName, "");
    EXPECT_FALSE(policy.IsMaster);
    EXPECT_EQ(policy.NumOfPlayer, 0);
    EXPECT_EQ(policy.TypeOfNetwork, 0);
    EXPECT_EQ(policy.nImageDuration, 0);
    EXPECT_EQ(policy.nItemCount, 0);
    EXPECT_EQ(policy.nTotalSize, 0U);
    EXPECT_EQ(policy.nProjectID, 0U);

    EXPECT_EQ(policy.nCheckPeriod, 30);
    EXPECT_EQ(policy.strVersion, "1.2");
    EXPECT_EQ(policy.stExpiration.nYear, 2016);
    EXPECT_EQ(policy.stExpiration.nMonth, 12);
    EXPECT_EQ(policy.stExpiration.nDay, 31);
    EXPECT_EQ(policy.IPType, 3);
    ExpectAnswers(true, true);
}

TEST_F(ContentCheck, DestroyingTheMonitorReleasesItsPolicy)
{
    StoreGood();
    CVQMSyncDemoMonitor::DestroyInstance();
    monitor_ = CVQMSyncDemoMonitor::GetInstance();
    ExpectAnswers(false, false);
    EXPECT_TRUE(Current().bError);
    EXPECT_TRUE(Current().listSchedule.empty());
}

} // namespace
