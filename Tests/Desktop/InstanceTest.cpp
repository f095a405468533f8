#include <gtest/gtest.h> // before X11, whose macros it does not survive

#include "Platform/desktop/x11/Instance.h"

#include <chrono>
#include <csignal>
#include <cstring>
#include <sys/wait.h>
#include <unistd.h>

#include <X11/Xatom.h>

#include "Tests/Desktop/XServer.h"
#include "Tests/Support/Eventually.h"

using namespace desktop;

namespace {

using namespace std::chrono_literals;

constexpr char kName[] = "org.example.instance";

std::chrono::milliseconds Timeout()
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(TestPatience());
}

using Names = std::vector<std::string>;

class Instance : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_FALSE(server_.Name().empty());
        display_ = XOpenDisplay(server_.Name().c_str());
        ASSERT_NE(display_, nullptr);
    }

    void TearDown() override
    {
        if (display_ != nullptr) {
            XCloseDisplay(display_);
        }
    }

    /// A process that claims the name and then lives until it is killed.
    pid_t StartClaimant() const
    {
        int ready[2] = {-1, -1};
        EXPECT_EQ(pipe(ready), 0);
        const pid_t pid = fork();
        if (pid == 0) {
            Display* display = XOpenDisplay(server_.Name().c_str());
            InstanceClaim claim(display, kName);
            claim.PublishKeys({"XF86More"}, {"XF86Tools"});
            claim.PublishReleasedKeys({"Up"});
            XSync(display, False);
            _exit(write(ready[1], "x", 1) == 1 && pause() == 0 ? 0 : 1);
        }
        char byte = 0;
        EXPECT_EQ(read(ready[0], &byte, 1), 1);
        close(ready[0]);
        close(ready[1]);
        return pid;
    }

    /// A process that asks the instance to come forward, and ends with the answer as its status.
    pid_t StartAsking() const
    {
        const pid_t pid = fork();
        if (pid == 0) {
            Display* display = XOpenDisplay(server_.Name().c_str());
            _exit(static_cast<int>(RequestLaunch(display, *ReadInstance(display, kName), Timeout())));
        }
        return pid;
    }

    static LaunchAnswer AnswerTo(pid_t asking)
    {
        int status = 0;
        waitpid(asking, &status, 0);
        EXPECT_TRUE(WIFEXITED(status));
        return static_cast<LaunchAnswer>(WEXITSTATUS(status));
    }

    /// The next launch request that reaches the claim.
    XEvent TakeRequest(const InstanceClaim& claim) const
    {
        XEvent event;
        do {
            XNextEvent(display_, &event);
        } while (!claim.IsLaunchRequest(event));
        return event;
    }

    XServer server_;
    Display* display_ = nullptr;
};

/// A window that owns the selection and writes into the properties what it likes.
class Stranger {
public:
    explicit Stranger(Display* display) : display_(display)
    {
        window_ = XCreateSimpleWindow(display_, DefaultRootWindow(display_), 0, 0, 1, 1, 0, 0, 0);
        XSetSelectionOwner(display_, XInternAtom(display_, kName, False), window_, CurrentTime);
    }

    void Write(const char* property, const char* type, int format, const void* data, std::size_t items)
    {
        XChangeProperty(display_, window_, XInternAtom(display_, property, False), XInternAtom(display_, type, False),
                        format, PropModeReplace, static_cast<const unsigned char*>(data), static_cast<int>(items));
    }

    void WritePid(unsigned long pid) { Write("_TV_PID", "CARDINAL", 32, &pid, 1); }
    void WriteHeld(const std::string& text) { Write("_TV_HELD_KEYS", "UTF8_STRING", 8, text.data(), text.size()); }

private:
    Display* display_;
    Window window_;
};

/// The literal with the zero bytes in it.
template <std::size_t kSize>
std::string Text(const char (&literal)[kSize])
{
    return std::string(literal, kSize - 1);
}

} // namespace

TEST_F(Instance, AnEmptyDisplayHasNoInstance)
{
    EXPECT_FALSE(ReadInstance(display_, kName));
}

TEST_F(Instance, AnotherProcessIsSeenWithItsKeysUntilItIsKilled)
{
    const pid_t pid = StartClaimant();

    const auto seen = ReadInstance(display_, kName);
    ASSERT_TRUE(seen);
    EXPECT_EQ(seen->pid, pid);
    EXPECT_EQ(seen->heldKeys, Names{"XF86More"});
    EXPECT_EQ(seen->failedKeys, Names{"XF86Tools"});
    EXPECT_EQ(seen->releasedKeys, Names{"Up"});
    EXPECT_FALSE(ReadInstance(display_, "org.example.other"));
    {
        const InstanceClaim second(display_, kName);
        ASSERT_TRUE(second.OtherInstance());
        EXPECT_EQ(second.OtherInstance()->pid, pid);
    }
    EXPECT_EQ(ReadInstance(display_, kName)->pid, pid) << "a second claim takes nothing away";

    kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
    EXPECT_TRUE(Eventually([this] { return !ReadInstance(display_, kName); }));
    EXPECT_FALSE(InstanceClaim(display_, kName).OtherInstance());
}

TEST_F(Instance, TheKeyWindowIsThereOnceTheMainLoopRuns)
{
    InstanceClaim claim(display_, kName);
    EXPECT_EQ(ReadInstance(display_, kName)->keyWindow, std::nullopt);
    claim.PublishKeyWindow(None);
    EXPECT_EQ(ReadInstance(display_, kName)->keyWindow, Window{None});
    claim.PublishKeyWindow(DefaultRootWindow(display_));
    EXPECT_EQ(ReadInstance(display_, kName)->keyWindow, DefaultRootWindow(display_));
}

TEST_F(Instance, ALaunchRequestReachesTheClaimAndIsAnswered)
{
    InstanceClaim claim(display_, kName);
    const pid_t asking = StartAsking();
    const XEvent request = TakeRequest(claim);
    claim.AnswerLaunchRequest(request);
    XFlush(display_);
    EXPECT_EQ(AnswerTo(asking), LaunchAnswer::kTold);

    XEvent other = request;
    other.xclient.message_type = XA_STRING;
    EXPECT_FALSE(claim.IsLaunchRequest(other));
}

TEST_F(Instance, AStartThatAsksAnInstanceThatEndsTakesOver)
{
    InstanceClaim claim(display_, kName);
    const pid_t asking = StartAsking();
    const XEvent request = TakeRequest(claim);
    claim.GiveUp();
    EXPECT_EQ(AnswerTo(asking), LaunchAnswer::kGone);
    EXPECT_FALSE(claim.IsLaunchRequest(request));
    EXPECT_FALSE(ReadInstance(display_, kName));
    EXPECT_FALSE(InstanceClaim(display_, kName).OtherInstance());
}

TEST_F(Instance, AnUnansweredRequestTimesOut)
{
    const InstanceClaim claim(display_, kName);
    EXPECT_EQ(RequestLaunch(display_, *ReadInstance(display_, kName), 0ms), LaunchAnswer::kSilent);
}

TEST_F(Instance, ARequestToAGoneWindowReportsThat)
{
    InstanceFacts gone;
    gone.window = 0x7654321;
    EXPECT_EQ(RequestLaunch(display_, gone, Timeout()), LaunchAnswer::kGone);
}

TEST_F(Instance, AnswersToUnknownWindowsAreIgnored)
{
    InstanceClaim claim(display_, kName);
    // A 32-bit long holds the last of them as -1.
    for (const long window : {0L, 1L, 0x7654321L, static_cast<long>(0xFFFFFFFFUL)}) {
        XEvent request = {};
        request.xclient.data.l[0] = window;
        claim.AnswerLaunchRequest(request);
    }
    EXPECT_EQ(ReadInstance(display_, kName)->pid, getpid()) << "the connection lives";
}

TEST_F(Instance, ASuccessorWaitsUntilItsPredecessorIsGone)
{
    int go[2] = {-1, -1};
    int ready[2] = {-1, -1};
    ASSERT_EQ(pipe(go), 0);
    ASSERT_EQ(pipe(ready), 0);
    const pid_t predecessor = fork();
    if (predecessor == 0) {
        Display* display = XOpenDisplay(server_.Name().c_str());
        InstanceClaim claim(display, kName);
        claim.GiveUp();
        XSync(display, False);
        char byte = 0;
        _exit(write(ready[1], "x", 1) == 1 && read(go[0], &byte, 1) == 1 ? 0 : 1);
    }
    char byte = 0;
    ASSERT_EQ(read(ready[0], &byte, 1), 1);
    const Atom ending = XInternAtom(display_, (std::string(kName) + ".ending").c_str(), False);

    InstanceClaim successor(display_, kName);
    EXPECT_FALSE(successor.OtherInstance());
    successor.WaitForPredecessor(0ms);
    EXPECT_NE(XGetSelectionOwner(display_, ending), None) << "the time was up";
    ASSERT_EQ(write(go[1], "x", 1), 1);
    successor.WaitForPredecessor(Timeout());
    EXPECT_EQ(XGetSelectionOwner(display_, ending), None);
    waitpid(predecessor, nullptr, 0);
    for (const int fd : {go[0], go[1], ready[0], ready[1]}) {
        close(fd);
    }
}

TEST_F(Instance, AnOwnerWithoutAProcessIsNotAnInstance)
{
    Stranger stranger(display_);
    EXPECT_FALSE(ReadInstance(display_, kName));

    stranger.Write("_TV_PID", "STRING", 8, "1234", 4);
    EXPECT_FALSE(ReadInstance(display_, kName)) << "another type";
    const unsigned long two[] = {1, 2};
    stranger.Write("_TV_PID", "CARDINAL", 32, two, 0);
    EXPECT_FALSE(ReadInstance(display_, kName)) << "empty";
    for (const unsigned long pid : {0UL, 4194305UL, 0xFFFFFFFFUL}) {
        stranger.WritePid(pid);
        EXPECT_FALSE(ReadInstance(display_, kName)) << pid;
    }

    const InstanceClaim claim(display_, kName);
    EXPECT_FALSE(claim.OtherInstance());
    EXPECT_EQ(ReadInstance(display_, kName)->pid, getpid()) << "the name is taken from a stranger";
}

TEST_F(Instance, HostileListsAreCutToWhatKeysCouldBe)
{
    Stranger stranger(display_);
    stranger.WritePid(1);

    const std::string longest(63, 'A');
    const struct {
        const char* what;
        std::string text;
        Names names;
    } cases[] = {
        {"empty", "", {}},
        {"no end", "XF86More", {}},
        {"nothing but ends", std::string(100, '\0'), {}},
        {"commands to a terminal", Text("\x1b]0;x\a\0XF86More\0"), {"XF86More"}},
        {"a line end", Text("XF86\nMore\0Up\0"), {"Up"}},
        {"not ASCII", Text("\xff\xfe\0XF86_1\0"), {"XF86_1"}},
        {"the longest name", longest + '\0', {longest}},
        {"a longer name", longest + 'A' + '\0', {}},
    };
    for (const auto& c : cases) {
        stranger.WriteHeld(c.text);
        EXPECT_EQ(ReadInstance(display_, kName)->heldKeys, c.names) << c.what;
    }

    std::string many;
    for (int i = 0; i < 100000; ++i) {
        many += Text("A\0");
    }
    stranger.WriteHeld(many);
    EXPECT_EQ(ReadInstance(display_, kName)->heldKeys.size(), 193U);

    stranger.Write("_TV_HELD_KEYS", "STRING", 8, "XF86More", 9);
    EXPECT_EQ(ReadInstance(display_, kName)->heldKeys, Names{}) << "another type";
    const unsigned long words[] = {0x41414141, 0};
    stranger.Write("_TV_HELD_KEYS", "UTF8_STRING", 32, words, 2);
    EXPECT_EQ(ReadInstance(display_, kName)->heldKeys, Names{}) << "another format";
}
