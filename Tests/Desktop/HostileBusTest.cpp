#include <tvcontext.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <dbus/dbus.h>
#include <Ecore.h>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

#include "Platform/desktop/bus/BusMessage.h"
#include "Platform/desktop/bus/BusProbe.h"
#include "Platform/desktop/bus/CappedText.h"
#include "Platform/desktop/bus/NotificationDaemon.h"
#include "Tests/Desktop/BusClient.h"
#include "Tests/Desktop/FakeBus.h"
#include "Tests/Desktop/Fixtures.h"
#include "Tests/Desktop/PopupsFixture.h"

using desktop::BusAnswer;
using desktop::BusReply;
using namespace fixtures;

namespace {

constexpr std::chrono::seconds kLong{60};

class HostileBus : public fixtures::Popups {
protected:
    std::string Place(const std::string& name) const { return "unix:path=" + (folder_ / name); }

    /// A bus that says that this is who owns the notification daemon's name.
    void StartFakeBus(const std::string& owner)
    {
        const int listening = fixtures::ListenOn(BusSocket());
        ASSERT_NE(listening, -1);
        bus_.emplace([listening, owner] {
            fixtures::ServeFakeBus(listening, [&owner](DBusMessage* call, DBusMessage* reply) {
                const char* text = dbus_message_has_member(call, "Hello") != FALSE ? ":1.1" : owner.c_str();
                return dbus_message_append_args(reply, DBUS_TYPE_STRING, &text, DBUS_TYPE_INVALID) != FALSE;
            });
        });
        close(listening);
        setenv("DBUS_SESSION_BUS_ADDRESS", ("unix:path=" + BusSocket()).c_str(), 1);
    }
};

std::vector<std::string> LinesOf(const std::string& file)
{
    std::istringstream text(fixtures::ReadFile(file));
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);) {
        lines.push_back(line);
    }
    return lines;
}

const std::string kNoUniqueNames[] = {
    "", "x", ":1.", "org.example.x", ":1.2 ", ":1.2\n", ":" + std::string(300, '1') + ".1"};

BusReply TextReply(const std::string& text)
{
    BusReply reply{BusAnswer::kDone, desktop::BusMessage(dbus_message_new(DBUS_MESSAGE_TYPE_METHOD_RETURN))};
    const char* argument = text.c_str();
    dbus_message_append_args(reply.message.get(), DBUS_TYPE_STRING, &argument, DBUS_TYPE_INVALID);
    return reply;
}

} // namespace

TEST_F(HostileBus, AForgedOwnerChangeChangesNothing)
{
    StartBus();
    StartDunst();
    HoldBack();
    ASSERT_TRUE(LoopUntil([] { return Paused() == kYes; }));
    BusClient client;
    for (const char* owner : {"x", "", ":1.999", "no name at all"}) {
        client.ForgeOwnerChange(owner);
        ASSERT_TRUE(client.ApplicationHasRead());
        EXPECT_TRUE(Exists(Record())) << owner;
    }
    EXPECT_EQ(Paused(), kYes);
    tvcontext_end_popup_free();
    EXPECT_TRUE(Eventually([] { return Paused() == kNo; }));
}

TEST_F(HostileBus, AnOwnerThatIsNotABusNameIsNotAsked)
{
    for (const std::string& owner : kNoUniqueNames) {
        StartFakeBus(owner);
        Process application([] {
            ecore_fork_reset();
            HoldBack();
            tvcontext_fini();
        });
        EXPECT_EQ(application.Wait(), 0) << owner;
        bus_.reset();
        unlink(BusSocket().c_str());
    }
}

TEST_F(HostileBus, ADaemonThatLosesItsNameAndLivesOnIsNotLeftPaused)
{
    StartBus();
    fixtures::ServiceManners manners;
    manners.pauses = true;
    const std::string log = folder_ / "service";
    StartService(manners, log);
    HoldBack();
    ASSERT_TRUE(LoopUntil([&] { return LinesOf(log).back() == "Set true"; }));
    daemon_->Signal(SIGUSR2);
    EXPECT_TRUE(LoopUntil([&] { return LinesOf(log).back() == "Set false"; }));
    EXPECT_FALSE(Exists(Record()));
}

TEST_F(HostileBus, ANameThatChangesHandsQuicklyIsNotAskedForEachTime)
{
    StartBus();
    fixtures::ServiceManners manners;
    manners.nameChanges = 200;
    manners.until = fixtures::ServiceManners::Until::kDropsRequests;
    const std::string log = folder_ / "service";
    HoldBack();
    StartService(manners, log); // while the main loop stands still
    EXPECT_TRUE(BusClient().ApplicationHasRead());
    // Asked at once, or once more after a while: but not two hundred times.
    ASSERT_TRUE(LoopUntil([&] { return LinesOf(log).size() > 1; }));
    EXPECT_LT(LinesOf(log).size(), 20U);
}

TEST_F(HostileBus, ADaemonThatLosesTheFirstRequestsIsAskedAgain)
{
    StartBus();
    fixtures::ServiceManners manners;
    manners.inhibits = true;
    manners.until = fixtures::ServiceManners::Until::kDropsRequests;
    const std::string log = folder_ / "service";
    StartService(manners, log);
    EXPECT_EQ(tvcontext_init(), 0);
    EXPECT_LT(tvcontext_begin_popup_free(), 0);
    daemon_->Signal(SIGUSR1);
    EXPECT_TRUE(LoopUntil([] { return Exists(Record()); }));
    tvcontext_end_popup_free();
    EXPECT_TRUE(Eventually([&] { return LinesOf(log).back() == "UnInhibit 42"; }));
}

TEST_F(HostileBus, AnInterruptedWaitDoesNotCountAsSilence)
{
    const int listening = fixtures::ListenOn(BusSocket());
    static int handled[2];
    ASSERT_EQ(pipe(handled), 0);
    signal(SIGALRM, [](int) { [[maybe_unused]] const ssize_t ignored = write(handled[1], "", 1); });
    const Process bus([listening] {
        const int peer = accept(listening, nullptr, nullptr);
        char byte = 0;
        kill(getppid(), SIGALRM);
        [[maybe_unused]] const ssize_t got = read(handled[0], &byte, 1);
        [[maybe_unused]] const ssize_t sent = send(peer, "REJECTED\r\n", 10, MSG_NOSIGNAL);
        pause();
    });
    EXPECT_TRUE(desktop::BusAnswers("unix:path=" + BusSocket(), kLong));
    signal(SIGALRM, SIG_DFL);
    close(handled[0]);
    close(handled[1]);
    close(listening);
}

TEST_F(HostileBus, EachPlaceOfAnAddressIsAsked)
{
    StartBus();
    const std::string live = Place("bus-socket");
    const int silent = fixtures::ListenOn(folder_ / "silent");
    const int closing = fixtures::ListenOn(folder_ / "closing");
    const Process closer([closing] {
        for (;;) {
            close(accept(closing, nullptr, nullptr));
        }
    });
    const struct {
        std::string address;
        std::string answering;
    } cases[] = {
        {live, live},
        {Place("missing") + ";" + live, live},
        {Place("closing") + ";" + live, live},
        {"no address;;=;" + live, live},
        {live + ",guid=0;" + Place("missing"), live + ",guid=0"},
        {Place("missing"), ""},
        {Place("closing"), ""},
        {"", ""},
        {";;;", ""},
    };
    for (const auto& [address, answering] : cases) {
        EXPECT_EQ(desktop::AnsweringPlace(address, kLong).value_or(""), answering) << address;
    }
    // This one is waited for until the time is over.
    EXPECT_EQ(desktop::AnsweringPlace(Place("silent") + ";" + live, std::chrono::seconds(2)), live);
    EXPECT_FALSE(desktop::AnsweringPlace(Place("silent"), std::chrono::milliseconds(10)));
    close(silent);
    close(closing);
}

TEST_F(HostileBus, TheSecondPlaceIsJoinedWhenTheFirstHangs)
{
    StartBus();
    StartDunst();
    const int silent = fixtures::ListenOn(folder_ / "silent");
    setenv("DBUS_SESSION_BUS_ADDRESS", (Place("silent") + ";" + Place("bus-socket")).c_str(), 1);
    HoldBack();
    setenv("DBUS_SESSION_BUS_ADDRESS", Place("bus-socket").c_str(), 1);
    EXPECT_TRUE(LoopUntil([] { return Paused() == kYes; }));
    close(silent);
}

TEST(BusAnswers, NamesFromOutsideAreChecked)
{
    for (const std::string& name : kNoUniqueNames) {
        EXPECT_EQ(desktop::UniqueNameIn(TextReply(name)), "") << name;
    }
    EXPECT_EQ(desktop::UniqueNameIn(TextReply(":1.42")), ":1.42");
    EXPECT_EQ(desktop::UniqueNameIn(BusReply()), "");
}

TEST(BusAnswers, AnIdentityIsShortAndWithoutLineEnds)
{
    const std::string identity = "3f0c0123456789abcdef0123456789ab";
    EXPECT_EQ(desktop::IdentityIn(TextReply(identity)), identity);
    EXPECT_EQ(desktop::IdentityIn(TextReply(std::string(65, 'a'))), "");
    EXPECT_EQ(desktop::IdentityIn(TextReply("3f\nbefore=paused")), "");
    EXPECT_EQ(desktop::IdentityIn(TextReply("")), "");
}

TEST(BusAnswers, ALongProductNameIsCut)
{
    EXPECT_EQ(desktop::ProductNameIn(TextReply("dunst")), "dunst");
    EXPECT_EQ(desktop::ProductNameIn(TextReply(std::string(5'000'000, 'x'))), std::string(80, 'x') + "...");
}

TEST(CappedText, KeepsCharactersWhole)
{
    EXPECT_EQ(desktop::CappedText("abc", 3), "abc");
    EXPECT_EQ(desktop::CappedText("abcd", 3), "abc...");
    EXPECT_EQ(desktop::CappedText("ab\xC3\xA9x", 3), "ab...");
    EXPECT_EQ(desktop::CappedText("\xC3\xA9x", 2), "\xC3\xA9...");
    EXPECT_EQ(desktop::CappedText("\x80\x80", 1), "...");
}
