#include <atomic>
#include <mutex>
#include <set>

#include "Tests/Common/NumberedSchedule.h"
#include "Tests/Common/StoredDemo.h"
#include "Tests/Support/RunTogether.h"

// The monitor on many threads, as far as its header lets them.

namespace {

constexpr int kRounds = 60;

using MonitorThreads = StoredDemo;

TEST_F(MonitorThreads, TheInstanceMayBeFetchedAndDestroyedFromAnyOfThem)
{
    RunTogether(8, [](int number) {
        for (int round = 0; round < kRounds * 4; ++round) {
            if ((number + round) % 4 == 0) {
                CVQMSyncDemoMonitor::DestroyInstance();
            } else {
                ASSERT_NE(CVQMSyncDemoMonitor::GetInstance(), nullptr);
            }
        }
    });
}

TEST_F(MonitorThreads, AllFetchTheSameInstance)
{
    for (int round = 0; round < kRounds; ++round) {
        CVQMSyncDemoMonitor::DestroyInstance();
        CVQMSyncDemoMonitor* fetched[4] = {};
        RunTogether(4, [&fetched](int number) { fetched[number] = CVQMSyncDemoMonitor::GetInstance(); });
        EXPECT_EQ(std::set<CVQMSyncDemoMonitor*>(std::begin(fetched), std::end(fetched)).size(), 1U);
        EXPECT_NE(fetched[0], nullptr);
    }
}

/// Two threads copy and one takes while one checks, two parse and one clears.
TEST_F(MonitorThreads, EachCopyOfThePolicyIsWhole)
{
    std::atomic<int> storing = 3;
    const auto parse = [&](int from) {
        const std::string path = kScheduleDirectory + std::to_string(from);
        for (int number = from; number < from + kRounds; ++number) {
            std::ofstream(path) << NumberedSchedule(number);
            EXPECT_TRUE(monitor_->ParseStoredSchedule(path, nullptr));
        }
        --storing;
    };
    const auto check = [&](int from) {
        for (int number = from; number < from + kRounds; ++number) {
            StoreSchedule(NumberedSchedule(number));
            monitor_->CheckContents();
            EXPECT_TRUE(monitor_->CheckHaveSchedule());
            EXPECT_TRUE(monitor_->CheckHaveContents());
        }
        --storing;
    };
    const auto clear = [&] {
        while (storing != 0) {
            monitor_->ClearCurrentPlolicy();
            std::this_thread::yield();
        }
    };
    const auto copy = [&] {
        _VQMPolicy policy; // one for all copies: what the last one held must go
        while (storing != 0 && !HasFailure()) {
            monitor_->GetCurrentPolicy(policy);
            ExpectWhole(policy);
        }
    };
    const auto take = [&] {
        while (storing != 0 && !HasFailure()) {
            _VQMPolicy policy;
            monitor_->TakeCurrentPolicy(policy);
            ExpectWhole(policy);
        }
    };
    RunTogether({[&] { check(1000); }, [&] { parse(2000); }, [&] { parse(3000); }, clear, copy, copy, take});
    ExpectWhole(Current());
}

TEST_F(MonitorThreads, ParsingIntoTheCallersPolicyNeedsNoLock)
{
    RunTogether(4, [this](int number) {
        const std::string path = kScheduleDirectory + std::to_string(number);
        for (int round = 0; round < kRounds; ++round) {
            std::ofstream(path) << NumberedSchedule(1000 * (number + 1) + round);
            _VQMPolicy policy;
            EXPECT_TRUE(monitor_->ParseStoredSchedule(path, &policy));
            EXPECT_EQ(policy.nCheckPeriod, 1000 * (number + 1) + round);
            ExpectWhole(policy);
        }
    });
    EXPECT_TRUE(Current().bError) << "none was stored";
}

TEST_F(MonitorThreads, ChecksMayMoveFromThreadToThread)
{
    std::mutex oneAtATime;
    RunTogether(4, [&](int number) {
        for (int round = 0; round < kRounds / 4; ++round) {
            const std::lock_guard<std::mutex> lock(oneAtATime);
            StoreSchedule(NumberedSchedule(1000 * (number + 1) + round));
            EXPECT_TRUE(monitor_->Create());
            monitor_->CheckContents();
            EXPECT_TRUE(monitor_->CheckHaveContents());
            EXPECT_EQ(Current().nCheckPeriod, 1000 * (number + 1) + round);
        }
    });
}

} // namespace
