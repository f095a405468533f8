#include "Common/VQMSyncDemoMonitor.h"

#include <new>
#include <set>
#include <thread>
#include <type_traits>
#include <vector>

#include <gmock/gmock.h>

#include "Tests/Support/AllocationFault.h"
#include "Tests/Support/Recorder.h"
#include "Tests/Support/RecordingSettings.h"

using recorder::Lines;
using recorder::Take;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace {

constexpr char kKey[] = "db/menu/syncdemo/state";

const recorder::LogOf kLog{"Quillmere", "VQMSyncDemoMonitor.cpp"};
const std::string kRead = "vconf_get_int db/menu/syncdemo/state";
const std::string kEnabled =
    kLog.Debug("CheckSyncDemoEnbaled", "CVQMSyncDemoMonitor::CheckSyncDemoEnbaled - Enabled \n");
const std::string kDisabled =
    kLog.Debug("CheckSyncDemoEnbaled", "CVQMSyncDemoMonitor::CheckSyncDemoEnbaled - Disabled \n");
const std::string kNotify = "vconf_notify_key_changed db/menu/syncdemo/state";
const std::string kIgnore = "vconf_ignore_key_changed db/menu/syncdemo/state";

void OnChange(keynode_t* /*node*/, void* /*userData*/) {}

void* const kCallback = reinterpret_cast<void*>(OnChange);

} // namespace

class SyncDemoMonitor : public testing::Test {
protected:
    SyncDemoMonitor()
    {
        recording::settings() = {};
        // The registration flag belongs to the process: end a registration that an earlier test left.
        CVQMSyncDemoMonitor::UnSetVconfCallBack(kCallback);
        CVQMSyncDemoMonitor::DestroyInstance();
        recorder::Clear();
    }

    ~SyncDemoMonitor() override { CVQMSyncDemoMonitor::DestroyInstance(); }

    recording::Settings& settings = recording::settings();
};

TEST_F(SyncDemoMonitor, OnlyOneMeansOn)
{
    const struct {
        int stored;
        bool on;
    } cases[] = {{1, true}, {0, false}, {2, false}, {-1, false}, {11, false}, {2147483647, false}};
    for (const auto& testCase : cases) {
        settings.integers[kKey] = testCase.stored;
        EXPECT_EQ(CVQMSyncDemoMonitor::CheckSyncDemoEnbaled(), testCase.on) << testCase.stored;
        EXPECT_THAT(Take(), ElementsAre(kRead, testCase.on ? kEnabled : kDisabled));
    }
}

TEST_F(SyncDemoMonitor, MissingOrUnreadableSettingIsOff)
{
    EXPECT_FALSE(CVQMSyncDemoMonitor::CheckSyncDemoEnbaled());
    EXPECT_THAT(Take(), ElementsAre(kRead, kDisabled));

    settings.integers[kKey] = 1;
    settings.getResult = -1;
    EXPECT_FALSE(CVQMSyncDemoMonitor::CheckSyncDemoEnbaled());
    EXPECT_THAT(Take(), ElementsAre(kRead, kDisabled));
}

TEST_F(SyncDemoMonitor, EveryCheckReadsTheStoreAfresh)
{
    settings.integers[kKey] = 1;
    EXPECT_TRUE(CVQMSyncDemoMonitor::CheckSyncDemoEnbaled());
    settings.integers[kKey] = 0;
    EXPECT_FALSE(CVQMSyncDemoMonitor::CheckSyncDemoEnbaled());
}

TEST_F(SyncDemoMonitor, SettingIsReadAndWrittenAFixedNumberOfTimes)
{
    const auto written = [](int value) {
        const std::string digit = std::to_string(value);
        return Lines{
            kLog.Debug("SetSyncDemoVocnf", "SetSyncDemoVocnf - path:db/menu/syncdemo/state, value:" + digit + " \n"),
            "vconf_set_int db/menu/syncdemo/state " + digit,
            kLog.Debug("SetSyncDemoVocnf", "CVQMSyncDemoMonitor::SetSyncDemoVocnf - success " + digit + " \n"),
        };
    };
    const struct {
        int stored;
        bool enable;
        Lines reads;
        Lines writes;
    } cases[] = {
        {1, true, {kRead, kEnabled, kRead, kEnabled}, {}},
        {1, false, {kRead, kEnabled}, written(0)},
        {0, true, {kRead, kDisabled, kRead, kDisabled}, written(1)},
        {0, false, {kRead, kDisabled, kRead, kDisabled}, {}},
        {2, true, {kRead, kDisabled, kRead, kDisabled}, written(1)},
        {2, false, {kRead, kDisabled, kRead, kDisabled}, {}},
    };
    for (const auto& testCase : cases) {
        settings.integers[kKey] = testCase.stored;
        CVQMSyncDemoMonitor::SetSyncDemoVocnf(testCase.enable);
        Lines expected = testCase.reads;
        expected.insert(expected.end(), testCase.writes.begin(), testCase.writes.end());
        EXPECT_THAT(Take(), ElementsAreArray(expected)) << testCase.stored << " -> " << testCase.enable;
    }
}

TEST_F(SyncDemoMonitor, SecondReadDecidesWhetherToSwitchOn)
{
    // Another process switches the setting off between the two reads.
    settings.integers[kKey] = 1;
    settings.onGet = [this] { settings.onGet = [this] { settings.integers[kKey] = 0; }; };
    CVQMSyncDemoMonitor::SetSyncDemoVocnf(true);
    EXPECT_EQ(settings.integers[kKey], 1);
    EXPECT_EQ(Take().size(), 7U) << "two reads and a write";
}

TEST_F(SyncDemoMonitor, OnlyMinusOneIsAFailedWrite)
{
    const std::string announced =
        kLog.Debug("SetSyncDemoVocnf", "SetSyncDemoVocnf - path:db/menu/syncdemo/state, value:1 \n");
    const struct {
        int result;
        std::string line;
    } cases[] = {
        {-1, "CVQMSyncDemoMonitor::SetSyncDemoVocnf - vconf_set_int returned error \n"},
        {0, "CVQMSyncDemoMonitor::SetSyncDemoVocnf - success 1 \n"},
        {-2, "CVQMSyncDemoMonitor::SetSyncDemoVocnf - success 1 \n"},
        {5, "CVQMSyncDemoMonitor::SetSyncDemoVocnf - success 1 \n"},
    };
    for (const auto& testCase : cases) {
        settings.integers.clear();
        settings.setResult = testCase.result;
        CVQMSyncDemoMonitor::SetSyncDemoVocnf(true);
        EXPECT_THAT(Take(),
                    ElementsAre(kRead, kDisabled, kRead, kDisabled, announced, "vconf_set_int db/menu/syncdemo/state 1",
                                kLog.Debug("SetSyncDemoVocnf", testCase.line)));
    }
}

TEST_F(SyncDemoMonitor, NullCallbackIsRefusedBeforeTheStoreIsAsked)
{
    EXPECT_FALSE(CVQMSyncDemoMonitor::SetVconfCallBack(nullptr, this));
    EXPECT_FALSE(CVQMSyncDemoMonitor::UnSetVconfCallBack(nullptr));
    EXPECT_THAT(Take(), ElementsAre(kLog.Debug("SetVconfCallBack", "error : vConfCallBack is NULL\n"),
                                    kLog.Debug("UnSetVconfCallBack", "error : vConfCallBack is NULL\n")));
}

TEST_F(SyncDemoMonitor, RegistrationHandsCallbackAndDataToTheStore)
{
    EXPECT_TRUE(CVQMSyncDemoMonitor::SetVconfCallBack(kCallback, this));
    EXPECT_THAT(Take(), ElementsAre(kNotify));
    EXPECT_EQ(settings.notified, OnChange);
    EXPECT_EQ(settings.notifiedData, this);
    EXPECT_TRUE(CVQMSyncDemoMonitor::UnSetVconfCallBack(kCallback));
    EXPECT_THAT(Take(), ElementsAre(kIgnore));
    EXPECT_EQ(settings.ignored, OnChange);
}

TEST_F(SyncDemoMonitor, OnlyMinusOneRefusesARegistration)
{
    for (const int result : {0, 1, -2}) {
        settings.notifyResult = result;
        EXPECT_TRUE(CVQMSyncDemoMonitor::SetVconfCallBack(kCallback, nullptr)) << result;
        EXPECT_THAT(Take(), ElementsAre(kNotify));
    }
    settings.notifyResult = -1;
    EXPECT_FALSE(CVQMSyncDemoMonitor::SetVconfCallBack(kCallback, nullptr));
    EXPECT_THAT(
        Take(),
        ElementsAre(kNotify, kLog.Debug("SetVconfCallBack",
                                        "CVQMSyncDemoMonitor::SetVconfCallBack - vconf_notify_key_changed returned "
                                        "error \n")));
    EXPECT_TRUE(CVQMSyncDemoMonitor::UnSetVconfCallBack(kCallback)) << "the earlier registration still counts";
}

TEST_F(SyncDemoMonitor, RefusedRegistrationLeavesNothingToTakeBack)
{
    settings.notifyResult = -1;
    EXPECT_FALSE(CVQMSyncDemoMonitor::SetVconfCallBack(kCallback, nullptr));
    Take();
    EXPECT_FALSE(CVQMSyncDemoMonitor::UnSetVconfCallBack(kCallback));
    EXPECT_THAT(Take(), ElementsAre(kLog.Debug("UnSetVconfCallBack", "error : vConfCallBack is not setted before\n")));
}

TEST_F(SyncDemoMonitor, OneFlagServesAllRegistrations)
{
    EXPECT_TRUE(CVQMSyncDemoMonitor::SetVconfCallBack(kCallback, nullptr));
    EXPECT_TRUE(CVQMSyncDemoMonitor::SetVconfCallBack(kCallback, nullptr));
    EXPECT_TRUE(CVQMSyncDemoMonitor::UnSetVconfCallBack(kCallback));
    Take();
    EXPECT_FALSE(CVQMSyncDemoMonitor::UnSetVconfCallBack(kCallback));
    EXPECT_THAT(Take(), ElementsAre(kLog.Debug("UnSetVconfCallBack", "error : vConfCallBack is not setted before\n")));
}

TEST_F(SyncDemoMonitor, FailedUnregistrationCanBeTriedAgain)
{
    EXPECT_TRUE(CVQMSyncDemoMonitor::SetVconfCallBack(kCallback, nullptr));
    Take();
    settings.ignoreResult = -1;
    for (int attempt = 0; attempt < 2; ++attempt) {
        EXPECT_FALSE(CVQMSyncDemoMonitor::UnSetVconfCallBack(kCallback));
        EXPECT_THAT(Take(), ElementsAre(kIgnore, kLog.Debug("UnSetVconfCallBack",
                                                            "CVQMSyncDemoMonitor::UnSetVconfCallBack - "
                                                            "vconf_ignore_key_changed returned error \n")));
    }
    settings.ignoreResult = -2;
    EXPECT_TRUE(CVQMSyncDemoMonitor::UnSetVconfCallBack(kCallback));
    EXPECT_FALSE(CVQMSyncDemoMonitor::UnSetVconfCallBack(kCallback));
}

TEST_F(SyncDemoMonitor, RegistrationOutlivesTheInstance)
{
    CVQMSyncDemoMonitor::GetInstance();
    EXPECT_TRUE(CVQMSyncDemoMonitor::SetVconfCallBack(kCallback, nullptr));
    Take();
    CVQMSyncDemoMonitor::DestroyInstance();
    EXPECT_THAT(Take(), IsEmpty()) << "destruction neither unregisters nor logs";
    EXPECT_TRUE(CVQMSyncDemoMonitor::UnSetVconfCallBack(kCallback));
}

TEST_F(SyncDemoMonitor, PathsReplaceWhatWasThereAndEndInASlash)
{
    CVQMSyncDemoMonitor* monitor = CVQMSyncDemoMonitor::GetInstance();
    std::string path = "something/else";
    monitor->GetSyncDemoMediaPath(path);
    EXPECT_EQ(path, "/opt/data/demo_movie/");
    monitor->GetSyncDemoSchedulePath(path);
    EXPECT_EQ(path, "/opt/usr/apps/" VQM_APP_ID "/RECH/");
    EXPECT_THAT(Take(),
                ElementsAre(kLog.Debug("GetSyncDemoMediaPath", "CVQMSyncDemoMonitor::GetSyncDemoMediaPath - "
                                                               "/opt/data/demo_movie/\n"),
                            kLog.Debug("GetSyncDemoSchedulePath", "CVQMSyncDemoMonitor::GetSyncDemoSchedulePath - "
                                                                  "/opt/usr/apps/" VQM_APP_ID "/RECH/\n")));
}

TEST_F(SyncDemoMonitor, FreshInstanceHasNeitherScheduleNorContents)
{
    CVQMSyncDemoMonitor* monitor = CVQMSyncDemoMonitor::GetInstance();
    EXPECT_FALSE(monitor->CheckHaveSchedule());
    EXPECT_FALSE(monitor->CheckHaveContents());
    EXPECT_THAT(Take(), IsEmpty());
}

TEST_F(SyncDemoMonitor, InstanceIsOneUntilItIsDestroyed)
{
    CVQMSyncDemoMonitor::DestroyInstance();
    CVQMSyncDemoMonitor* first = CVQMSyncDemoMonitor::GetInstance();
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(CVQMSyncDemoMonitor::GetInstance(), first);
    CVQMSyncDemoMonitor::DestroyInstance();
    CVQMSyncDemoMonitor::DestroyInstance();
    EXPECT_NE(CVQMSyncDemoMonitor::GetInstance(), nullptr);
}

TEST_F(SyncDemoMonitor, ThreadsShareOneInstance)
{
    std::vector<CVQMSyncDemoMonitor*> seen(16);
    std::vector<std::thread> threads;
    for (CVQMSyncDemoMonitor*& slot : seen) {
        threads.emplace_back([&slot] { slot = CVQMSyncDemoMonitor::GetInstance(); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(std::set<CVQMSyncDemoMonitor*>(seen.begin(), seen.end()).size(), 1U);
    EXPECT_NE(seen.front(), nullptr);
}

TEST_F(SyncDemoMonitor, FailedConstructionLeavesTheLockFreeAndTheNextCallCreates)
{
    allocation_fault::FailSize(sizeof(CVQMSyncDemoMonitor));
    EXPECT_THROW(CVQMSyncDemoMonitor::GetInstance(), std::bad_alloc);
    allocation_fault::FailSize(0);
    EXPECT_NE(CVQMSyncDemoMonitor::GetInstance(), nullptr);
}

// `DestroyInstance` deletes derived monitors too.
static_assert(std::has_virtual_destructor_v<CVQMSyncDemoMonitor>);
