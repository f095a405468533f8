#include <tvcontext.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <dbus/dbus.h>
#include <Ecore.h>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include "Platform/desktop/app/PopupInhibitor.h"
#include "Platform/desktop/bus/BusProbe.h"
#include "Platform/desktop/bus/PopupRecord.h"
#include "Platform/desktop/bus/SessionBus.h"
#include "Tests/Desktop/Fixtures.h"

using fixtures::Eventually;
using fixtures::Exists;
using fixtures::Process;
using testing::IsEmpty;

namespace {

constexpr char kDunst[] = "org.dunstproject.cmd0";
constexpr char kPath[] = "/org/freedesktop/Notifications";

std::string OutputOf(const std::string& command)
{
    std::string output;
    FILE* pipe = popen((command + " 2>/dev/null").c_str(), "r"); // NOLINT(cert-env33-c)
    std::array<char, 256> part;
    while (pipe != nullptr && fgets(part.data(), part.size(), pipe) != nullptr) {
        output += part.data();
    }
    pclose(pipe);
    return output;
}

/// What dunst says about itself.
std::string Paused()
{
    return OutputOf(std::string("gdbus call --session -d org.freedesktop.Notifications -o ") + kPath +
                    " -m org.freedesktop.DBus.Properties.Get " + kDunst + " paused");
}

constexpr char kYes[] = "(<true>,)\n";
constexpr char kNo[] = "(<false>,)\n";

void LoopFor(double seconds)
{
    const double end = fixtures::Seconds() + seconds;
    while (fixtures::Seconds() < end) {
        ecore_main_loop_iterate();
        usleep(1000);
    }
}

bool LoopUntil(const std::function<bool()>& condition)
{
    return Eventually([&] {
        ecore_main_loop_iterate();
        return condition();
    });
}

/// What another process must do for real: join, hold back, and be gone in one way or another.
void HoldBack()
{
    tvcontext_init();
    tvcontext_begin_popup_free();
}

class Popups : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        // Once for all: Ecore that is shut down still catches the end of children.
        const fixtures::Variable modules("ECORE_NO_SYSTEM_MODULES", "1");
        ecore_init();
    }
    void TearDown() override { tvcontext_fini(); }

    void StartBus()
    {
        const std::string socket = folder_ / "bus-socket";
        bus_.emplace(Process::Program({"dbus-daemon", "--session", "--nofork", "--address=unix:path=" + socket}));
        setenv("DBUS_SESSION_BUS_ADDRESS", ("unix:path=" + socket).c_str(), 1);
        ASSERT_TRUE(Eventually([&] { return desktop::BusAnswers("unix:path=" + socket, 500); }));
    }

    void StartDunst()
    {
        if (!display_) {
            const std::string number = folder_ / "display";
            display_.emplace([number] {
                dup2(open("/dev/null", O_RDWR), STDERR_FILENO);
                dup2(open(number.c_str(), O_CREAT | O_WRONLY, 0600), 3);
                execlp("Xvfb", "Xvfb", "-displayfd", "3", "-noreset", "-nolisten", "tcp", nullptr);
                _exit(127);
            });
            ASSERT_TRUE(Eventually([&] { return fixtures::ReadFile(number).find('\n') != std::string::npos; }));
            setenv("DISPLAY",
                   (":" + fixtures::ReadFile(number).substr(0, fixtures::ReadFile(number).find('\n'))).c_str(), 1);
        }
        daemon_.emplace(Process::Program({"dunst"}));
        ASSERT_TRUE(Eventually([] { return Paused() == kNo; }));
    }

    std::string Record() const { return desktop::PopupRecordFile(PLATFORM_APP_ID); }

    fixtures::TemporaryFolder folder_;
    fixtures::Variable runtime_{"XDG_RUNTIME_DIR", folder_.Path()};
    fixtures::Variable address_{"DBUS_SESSION_BUS_ADDRESS"};
    fixtures::Variable displayName_{"DISPLAY"};
    std::optional<Process> bus_;
    std::optional<Process> display_;
    std::optional<Process> daemon_;
};

} // namespace

TEST_F(Popups, WithoutABusNothingIsJoinedAndNothingIsStarted)
{
    const double begin = fixtures::Seconds();
    EXPECT_LT(tvcontext_init(), 0);
    EXPECT_LT(tvcontext_begin_popup_free(), 0);
    EXPECT_EQ(tvcontext_end_popup_free(), 0);
    EXPECT_EQ(tvcontext_fini(), 0);
    EXPECT_LT(fixtures::Seconds() - begin, 0.5);
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
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::snprintf(address.sun_path, sizeof address.sun_path, "%s", (folder_ / "bus").c_str());
    ASSERT_EQ(bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    close(socket);
    EXPECT_EQ(desktop::SessionBusAddress(), "unix:path=" + (folder_ / "bus"));
    EXPECT_LT(tvcontext_init(), 0); // nobody listens there
    setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/elsewhere", 1);
    EXPECT_EQ(desktop::SessionBusAddress(), "unix:path=/elsewhere");
    setenv("DBUS_SESSION_BUS_ADDRESS", "autolaunch:", 1);
    EXPECT_EQ(desktop::SessionBusAddress(), "");
}

TEST_F(Popups, ABusThatHangsIsGivenUpSoon)
{
    StartBus();
    bus_->Signal(SIGSTOP);
    const double begin = fixtures::Seconds();
    EXPECT_LT(tvcontext_init(), 0);
    EXPECT_LT(tvcontext_begin_popup_free(), 0);
    EXPECT_LT(fixtures::Seconds() - begin, 1.5);
    bus_->Signal(SIGCONT);
}

TEST_F(Popups, ASignalDoesNotPassForSilence)
{
    StartBus();
    bus_->Signal(SIGSTOP);
    const Process resumer([this] {
        usleep(100'000);
        bus_->Signal(SIGCONT);
    });
    signal(SIGALRM, [](int) {});
    const itimerval soon{{0, 0}, {0, 30'000}};
    setitimer(ITIMER_REAL, &soon, nullptr);
    EXPECT_EQ(tvcontext_init(), 0);
    signal(SIGALRM, SIG_DFL);
}

TEST_F(Popups, ABusWithoutADaemonIsNoError)
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
    EXPECT_EQ(Paused(), kYes);
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
                pause();
            });
            EXPECT_TRUE(Eventually([&] { return Exists(Record()) && Paused() == kYes; }));
            killed.Signal(SIGKILL);
            killed.Wait();
        }
        EXPECT_EQ(Paused(), kYes);
        HoldBack();
        EXPECT_EQ(Paused(), kYes);
        EXPECT_EQ(tvcontext_end_popup_free(), 0);
        EXPECT_EQ(Paused(), pausedBefore ? kYes : kNo);
        tvcontext_fini();
    }
}

TEST_F(Popups, ADaemonThatStartsAgainIsAskedAgain)
{
    StartBus();
    StartDunst();
    HoldBack();
    EXPECT_EQ(Paused(), kYes);
    daemon_->Signal(SIGTERM);
    daemon_->Wait();
    LoopFor(0.1);
    EXPECT_FALSE(Exists(Record()));
    StartDunst();
    EXPECT_TRUE(LoopUntil([] { return Paused() == kYes; }));
    EXPECT_EQ(tvcontext_end_popup_free(), 0);
    EXPECT_EQ(Paused(), kNo);
    daemon_.reset();
    StartDunst(); // nobody asks any more
    LoopFor(0.2);
    EXPECT_EQ(Paused(), kNo);
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

TEST_F(Popups, ADaemonThatHangsDelaysNobodyForLong)
{
    StartBus();
    StartDunst();
    daemon_->Signal(SIGSTOP);
    double begin = fixtures::Seconds();
    HoldBack();
    EXPECT_LT(fixtures::Seconds() - begin, 1.5);
    tvcontext_fini();
    daemon_->Signal(SIGCONT);
    EXPECT_EQ(Paused(), kNo);

    HoldBack();
    daemon_->Signal(SIGSTOP);
    begin = fixtures::Seconds();
    tvcontext_end_popup_free();
    EXPECT_LT(fixtures::Seconds() - begin, 1.5);
    daemon_->Signal(SIGCONT);
    EXPECT_EQ(Paused(), kNo); // it took the request when it woke up
}

TEST_F(Popups, TheBusMayGoAway)
{
    StartBus();
    StartDunst();
    HoldBack();
    bus_->Signal(SIGKILL);
    bus_->Wait();
    LoopFor(0.1);
    EXPECT_EQ(tvcontext_end_popup_free(), 0);
    EXPECT_EQ(tvcontext_fini(), 0);
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

namespace {

/// A daemon with the desktop's own inhibition; it writes down what it is asked.
void ServeInhibition(const std::string& log)
{
    DBusConnection* bus = dbus_bus_get(DBUS_BUS_SESSION, nullptr);
    dbus_bus_request_name(bus, "org.freedesktop.Notifications", 0, nullptr);
    std::string asked;
    while (dbus_connection_read_write(bus, -1) != FALSE) {
        while (DBusMessage* message = dbus_connection_pop_message(bus)) {
            const char* application = nullptr;
            const char* reason = nullptr;
            dbus_uint32_t cookie = 42;
            DBusMessage* reply = nullptr;
            if (dbus_message_has_member(message, "Inhibit") != FALSE) {
                dbus_message_get_args(message, nullptr, DBUS_TYPE_STRING, &application, DBUS_TYPE_STRING, &reason,
                                      DBUS_TYPE_INVALID);
                asked += std::string("Inhibit ") + dbus_message_get_signature(message) + " " + application + "\n";
                reply = dbus_message_new_method_return(message);
                dbus_message_append_args(reply, DBUS_TYPE_UINT32, &cookie, DBUS_TYPE_INVALID);
            } else if (dbus_message_has_member(message, "UnInhibit") != FALSE) {
                dbus_message_get_args(message, nullptr, DBUS_TYPE_UINT32, &cookie, DBUS_TYPE_INVALID);
                asked += "UnInhibit " + std::to_string(cookie) + "\n";
                reply = dbus_message_new_method_return(message);
            }
            if (reply != nullptr) {
                fixtures::WriteFile(log, asked);
                dbus_connection_send(bus, reply, nullptr);
                dbus_message_unref(reply);
            }
            dbus_message_unref(message);
        }
    }
}

} // namespace

TEST_F(Popups, TheDesktopsOwnInhibitionComesFirst)
{
    StartBus();
    const std::string log = folder_ / "asked";
    daemon_.emplace([&log] { ServeInhibition(log); });
    ASSERT_TRUE(Eventually([] {
        return OutputOf("gdbus call --session -d org.freedesktop.DBus -o /org/freedesktop/DBus -m "
                        "org.freedesktop.DBus.NameHasOwner org.freedesktop.Notifications") == "(true,)\n";
    }));
    EXPECT_EQ(tvcontext_init(), 0);
    EXPECT_EQ(tvcontext_begin_popup_free(), 0);
    EXPECT_EQ(tvcontext_begin_popup_free(), 0); // held back already
    EXPECT_EQ(fixtures::ReadFile(log), "Inhibit ssa{sv} " PLATFORM_APP_ID "\n");
    ASSERT_TRUE(desktop::ReadPopupRecord(Record()));
    EXPECT_TRUE(desktop::ReadPopupRecord(Record())->inhibited);
    EXPECT_EQ(tvcontext_end_popup_free(), 0);
    EXPECT_EQ(fixtures::ReadFile(log), "Inhibit ssa{sv} " PLATFORM_APP_ID "\nUnInhibit 42\n");
    EXPECT_FALSE(Exists(Record()));
}

TEST(PopupRecord, ComesBackAsItWasWritten)
{
    const fixtures::TemporaryFolder folder;
    const std::string path = folder / "x.popups";
    ASSERT_TRUE(desktop::WritePopupRecord(path, {1234, "3f0c", ":1.7", false, true}));
    EXPECT_EQ(fixtures::ReadFile(path), "pid=1234\nbus=3f0c\ndaemon=:1.7\nhow=paused\nbefore=paused\n");
    const auto record = desktop::ReadPopupRecord(path);
    ASSERT_TRUE(record);
    EXPECT_EQ(record->pid, 1234);
    EXPECT_EQ(record->bus, "3f0c");
    EXPECT_EQ(record->daemon, ":1.7");
    EXPECT_FALSE(record->inhibited);
    EXPECT_TRUE(record->pausedBefore);
}

TEST(PopupRecord, WhatMakesNoSenseIsNotBelieved)
{
    const fixtures::TemporaryFolder folder;
    const std::string path = folder / "x.popups";
    EXPECT_FALSE(desktop::ReadPopupRecord(path));
    for (const std::string& content : {std::string("\0\xff\n=\n==\npid", 11), std::string(100'000, 'x')}) {
        fixtures::WriteFile(path, content);
        const auto record = desktop::ReadPopupRecord(path);
        ASSERT_TRUE(record);
        EXPECT_EQ(record->daemon, "");
    }
}
