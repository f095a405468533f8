#include <tvcontext.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <Ecore.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

#include "Platform/desktop/app/Popups.h"
#include "Platform/desktop/bus/BusAddress.h"
#include "Platform/desktop/bus/PopupRecord.h"
#include "Platform/desktop/environment/ApplicationId.h"
#include "Tests/Desktop/BusClient.h"
#include "Tests/Desktop/FakeBus.h"
#include "Tests/Desktop/Fixtures.h"
#include "Tests/Desktop/PopupsFixture.h"
#include "Tests/Support/NotificationService.h"

using namespace fixtures;
using testing::IsEmpty;

TEST_F(Popups, WithoutABusNothingIsJoinedAndNothingIsStarted)
{
    EXPECT_LT(tvcontext_init(), 0);
    EXPECT_LT(tvcontext_begin_popup_free(), 0);
    EXPECT_EQ(tvcontext_end_popup_free(), 0);
    EXPECT_EQ(tvcontext_fini(), 0);
    EXPECT_TRUE(std::filesystem::is_empty(folder_.Path()));
}

TEST_F(Popups, EveryOrderOfCallsIsHarmless)
{
    EXPECT_LT(tvcontext_begin_popup_free(), 0);
    EXPECT_LT(tvcontext_end_popup_free(), 0);
    EXPECT_EQ(tvcontext_fini(), 0);
    EXPECT_EQ(tvcontext_fini(), 0);
    desktop::RestorePopupsNow();
}

TEST_F(Popups, TheBusIsWhereTheEnvironmentSays)
{
    EXPECT_EQ(desktop::SessionBusAddress(), "");
    close(fixtures::ListenOn(folder_ / "bus"));
    EXPECT_EQ(desktop::SessionBusAddress(), "unix:path=" + (folder_ / "bus"));
    EXPECT_LT(tvcontext_init(), 0); // there is no listener
    setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/elsewhere", 1);
    EXPECT_EQ(desktop::SessionBusAddress(), "unix:path=/elsewhere");
    setenv("DBUS_SESSION_BUS_ADDRESS", "autolaunch:", 1);
    EXPECT_EQ(desktop::SessionBusAddress(), "");
    setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/one;autolaunch:;unix:path=/two", 1);
    EXPECT_EQ(desktop::SessionBusAddress(), "unix:path=/one;unix:path=/two");
}

TEST_F(Popups, ABusThatHangsIsGivenUpAndJoinedOnceItAnswers)
{
    StartBus();
    StartDunst();
    bus_->Signal(SIGSTOP);
    EXPECT_LT(tvcontext_init(), 0);
    EXPECT_LT(tvcontext_begin_popup_free(), 0);
    bus_->Signal(SIGCONT);
    EXPECT_TRUE(LoopUntil([] { return Paused() == kYes; }));
    tvcontext_end_popup_free();
    EXPECT_TRUE(Eventually([] { return Paused() == kNo; }));
}

TEST_F(Popups, ABusWithoutADaemonIsNotAnError)
{
    StartBus();
    fixtures::CapturedLog captured;
    EXPECT_EQ(tvcontext_init(), 0);
    EXPECT_LT(tvcontext_begin_popup_free(), 0);
    const std::string log = captured.Text();
    EXPECT_THAT(log, testing::StartsWith("I/Platform("));
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 1);
    EXPECT_FALSE(Exists(Record()));
}

TEST_F(Popups, DunstIsPausedAndResumed)
{
    StartBus();
    StartDunst();
    fixtures::CapturedLog log;
    EXPECT_EQ(tvcontext_init(), 0);
    EXPECT_EQ(tvcontext_begin_popup_free(), 0);
    EXPECT_EQ(Paused(), kYes);
    const auto record = desktop::ReadPopupRecord(Record());
    ASSERT_TRUE(record);
    EXPECT_EQ(record->pid, getpid());
    EXPECT_FALSE(record->inhibited);
    EXPECT_FALSE(record->pausedBefore);
    EXPECT_EQ(tvcontext_end_popup_free(), 0);
    EXPECT_EQ(Paused(), kNo);
    EXPECT_FALSE(Exists(Record()));
    EXPECT_THAT(log.Text(), IsEmpty());
}

TEST_F(Popups, AUsersPauseStays)
{
    StartBus();
    StartDunst();
    OutputOf("dunstctl set-paused true");
    ASSERT_EQ(Paused(), kYes);
    HoldBack();
    EXPECT_TRUE(LoopUntil([] { return Paused() == kYes; }));
    EXPECT_EQ(tvcontext_end_popup_free(), 0);
    EXPECT_EQ(Paused(), kYes);
}

TEST_F(Popups, AfterAKillTheNextEndRestoresWhatTheFirstStartFound)
{
    StartBus();
    StartDunst();
    for (const bool pausedBefore : {false, true}) {
        OutputOf(std::string("dunstctl set-paused ") + (pausedBefore ? "true" : "false"));
        {
            Process killed([] {
                ecore_fork_reset();
                HoldBack();
                LoopUntil([] { return false; });
            });
            EXPECT_TRUE(Eventually([&] { return Exists(Record()) && Paused() == kYes; }));
            killed.Signal(SIGKILL);
            killed.Wait();
        }
        EXPECT_EQ(Paused(), kYes);
        HoldBack();
        EXPECT_TRUE(LoopUntil([] { return desktop::ReadPopupRecord(Record())->pid == getpid(); }));
        EXPECT_EQ(tvcontext_end_popup_free(), 0);
        EXPECT_TRUE(Eventually([pausedBefore] { return Paused() == (pausedBefore ? kYes : kNo); }));
        tvcontext_fini();
    }
}

TEST_F(Popups, ADaemonThatStartsAgainIsAskedAgain)
{
    StartBus();
    StartDunst();
    HoldBack();
    EXPECT_TRUE(LoopUntil([] { return Paused() == kYes; }));
    daemon_->Signal(SIGTERM);
    daemon_->Wait();
    EXPECT_TRUE(LoopUntil([] { return !Exists(Record()); }));
    StartDunst();
    EXPECT_TRUE(LoopUntil([] { return Paused() == kYes; }));
    EXPECT_EQ(tvcontext_end_popup_free(), 0);
    EXPECT_TRUE(Eventually([] { return Paused() == kNo; }));
}

TEST_F(Popups, AfterTheEndADaemonThatStartsIsNotAsked)
{
    StartBus();
    HoldBack();
    tvcontext_end_popup_free();
    StartDunst();
    EXPECT_TRUE(BusClient().ApplicationHasRead());
    EXPECT_EQ(Paused(), kNo);
    EXPECT_FALSE(Exists(Record()));
}

TEST_F(Popups, TheEmergencyExitRestores)
{
    StartBus();
    StartDunst();
    Process process([] {
        ecore_fork_reset();
        HoldBack();
        const bool held = Paused() == kYes;
        desktop::RestorePopupsNow();
        _exit(held ? 0 : 1);
    });
    EXPECT_EQ(process.Wait(), 0);
    EXPECT_EQ(Paused(), kNo);
}

TEST_F(Popups, AHangingDaemonIsNotAwaitedAndActsWhenItWakesUp)
{
    StartBus();
    StartDunst();
    daemon_->Signal(SIGSTOP);
    HoldBack(); // comes back though the daemon is stopped
    tvcontext_fini();
    daemon_->Signal(SIGCONT);
    EXPECT_TRUE(Eventually([] { return Paused() == kNo; }));

    HoldBack();
    EXPECT_TRUE(LoopUntil([] { return Paused() == kYes; }));
    daemon_->Signal(SIGSTOP);
    tvcontext_end_popup_free(); // comes back as well
    EXPECT_TRUE(Exists(Record()));
    daemon_->Signal(SIGCONT);
    EXPECT_TRUE(Eventually([] { return Paused() == kNo; }));
}

TEST_F(Popups, ADaemonThatAnswersLateHoldsPopupsBackFromThenOn)
{
    StartBus();
    StartDunst();
    daemon_->Signal(SIGSTOP);
    EXPECT_EQ(tvcontext_init(), 0);
    EXPECT_LT(tvcontext_begin_popup_free(), 0);
    daemon_->Signal(SIGCONT);
    EXPECT_TRUE(LoopUntil([] { return Paused() == kYes; }));
    tvcontext_end_popup_free();
    EXPECT_TRUE(Eventually([] { return Paused() == kNo; }));
}

TEST_F(Popups, TheBusMayGoAway)
{
    StartBus();
    StartDunst();
    HoldBack();
    bus_->Signal(SIGKILL);
    bus_->Wait();
    ecore_main_loop_iterate();
    EXPECT_EQ(tvcontext_end_popup_free(), 0);
    EXPECT_EQ(tvcontext_fini(), 0);
}

TEST_F(Popups, ABusThatStartsAgainIsJoinedAgain)
{
    StartBus();
    StartDunst();
    HoldBack();
    bus_->Signal(SIGKILL);
    bus_->Wait();
    daemon_.reset();
    ecore_main_loop_iterate();
    StartBus();
    StartDunst();
    EXPECT_TRUE(LoopUntil([] { return Paused() == kYes; }));
    tvcontext_end_popup_free();
    EXPECT_TRUE(Eventually([] { return Paused() == kNo; }));
}

TEST_F(Popups, WithoutAPlaceForTheRecordDunstIsLeftAlone)
{
    StartBus();
    StartDunst();
    const fixtures::Variable nowhere("XDG_RUNTIME_DIR", "/nowhere");
    EXPECT_EQ(tvcontext_init(), 0);
    EXPECT_LT(tvcontext_begin_popup_free(), 0);
    EXPECT_EQ(Paused(), kNo);
}

TEST_F(Popups, TheDesktopsOwnInhibitionComesFirst)
{
    StartBus();
    const std::string log = folder_ / "asked";
    fixtures::ServiceManners manners;
    manners.inhibits = true;
    StartService(manners, log);
    const std::string asked = std::string("ready\nInhibit ssa{sv} ") + desktop::kApplicationId + "\n";
    EXPECT_EQ(tvcontext_init(), 0);
    EXPECT_EQ(tvcontext_begin_popup_free(), 0);
    EXPECT_EQ(tvcontext_begin_popup_free(), 0); // held back already
    EXPECT_EQ(fixtures::ReadFile(log), asked);
    ASSERT_TRUE(desktop::ReadPopupRecord(Record()));
    EXPECT_TRUE(desktop::ReadPopupRecord(Record())->inhibited);
    EXPECT_EQ(tvcontext_end_popup_free(), 0);
    EXPECT_EQ(fixtures::ReadFile(log), asked + "UnInhibit 42\n");
    EXPECT_FALSE(Exists(Record()));
}
