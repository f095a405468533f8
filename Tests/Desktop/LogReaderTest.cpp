#include <dlog.h>

#include <csignal>
#include <cstddef>
#include <fcntl.h>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sstream>
#include <string>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <termios.h>
#include <unistd.h>
#include <vector>

#include "Tests/Desktop/Fixtures.h"

using testing::MatchesRegex;

namespace {

/// More than any channel here holds, and too many for each of them to wait a tenth of a second.
constexpr int kManyLines = 20'000;

/// The two ends of a log.
struct Channel {
    int read = -1;
    int written = -1;
};

Channel Pipe(int flags)
{
    int ends[2];
    EXPECT_EQ(pipe2(ends, flags), 0);
    return {ends[0], ends[1]};
}

Channel SocketPair()
{
    int ends[2];
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
    return {ends[0], ends[1]};
}

Channel Terminal(bool stopped)
{
    Channel terminal;
    EXPECT_EQ(openpty(&terminal.read, &terminal.written, nullptr, nullptr, nullptr), 0);
    if (stopped) {
        EXPECT_EQ(tcflow(terminal.written, TCOOFF), 0); // what Ctrl-S does
    }
    return terminal;
}

/// Then this process cannot open the channel again: /proc and the files of root refuse it.
void BecomeAnotherUser()
{
    constexpr uid_t kNobody = 65534;
    if (setgid(kNobody) != 0 || setuid(kNobody) != 0) {
        _exit(3);
    }
}

/// Ends this process when it hangs.
void MustEnd()
{
    alarm(static_cast<unsigned>(TestPatience().count()));
}

struct StalledReader {
    const char* name;
    std::function<Channel()> open;
    bool ofAnotherUser = false;
};

void PrintTo(const StalledReader& reader, std::ostream* out)
{
    *out << reader.name;
}

class LogOfStalledReader : public testing::TestWithParam<StalledReader> {
protected:
    void SetUp() override
    {
        if (GetParam().ofAnotherUser && geteuid() != 0) {
            // The reader of this case must not be able to open what the log opens; only root can start one.
            GTEST_SKIP() << "only root can become another user";
        }
    }

    const fixtures::Variable noColours_{"NO_COLOR", "1"};
};

/// Everything that has arrived so far.
std::string Drain(int descriptor)
{
    fcntl(descriptor, F_SETFL, fcntl(descriptor, F_GETFL) | O_NONBLOCK);
    std::string text;
    std::vector<char> part(1 << 16);
    for (ssize_t size = 0; (size = read(descriptor, part.data(), part.size())) > 0;) {
        text.append(part.data(), static_cast<std::size_t>(size));
    }
    return text;
}

} // namespace

TEST_P(LogOfStalledReader, DoesNotHoldUpTheProgram)
{
    const Channel channel = GetParam().open();
    fixtures::Process process([&] {
        MustEnd();
        dup2(channel.written, STDERR_FILENO);
        if (GetParam().ofAnotherUser) {
            BecomeAnotherUser();
        }
        for (int line = 0; line < kManyLines; ++line) {
            dlog_print(DLOG_DEBUG, "T", "line %d of a program that goes on", line);
        }
        _exit(0);
    });
    EXPECT_EQ(process.Wait(), 0);
    close(channel.read);
    close(channel.written);
}

TEST_P(LogOfStalledReader, ReportsDroppedLinesLater)
{
    const Channel channel = GetParam().open();
    int go[2];
    ASSERT_EQ(pipe(go), 0);
    fixtures::Process process([&] {
        dup2(channel.written, STDERR_FILENO);
        if (GetParam().ofAnotherUser) {
            BecomeAnotherUser();
        }
        for (int line = 0; line < kManyLines; ++line) {
            dlog_print(DLOG_DEBUG, "T", "line");
        }
        close(go[1]);
        char goOn = 0;
        while (read(go[0], &goOn, 1) == 1) {
            dlog_print(DLOG_DEBUG, "T", "later");
        }
        _exit(0);
    });
    close(go[0]);
    std::string text;
    bool stopped = true;
    EXPECT_TRUE(Eventually([&] {
        // Only a program that has come so far takes a byte; until then the reader is stalled.
        if (write(go[1], "x", 1) != 1) {
            return false;
        }
        if (stopped) {
            int waiting = 1;
            if (!Eventually([&] { return ioctl(go[1], FIONREAD, &waiting) == 0 && waiting == 0; })) {
                return false;
            }
            tcflow(channel.written, TCOON);
            stopped = false;
        }
        text += Drain(channel.read);
        return text.find(" lines dropped") != std::string::npos && text.find("later") != std::string::npos;
    }));
    close(go[1]);
    EXPECT_EQ(process.Wait(), 0);
    const std::size_t notice = text.find("E/Platform");
    ASSERT_NE(notice, std::string::npos) << text.substr(0, 1000);
    EXPECT_TRUE(notice == 0 || text[notice - 1] == '\n') << "it begins a line";
    EXPECT_THAT(text.substr(notice, text.find_first_of("\r\n", notice) - notice),
                MatchesRegex("E/Platform\\( *[0-9]+\\): Log.cpp: TellDroppedLines\\([0-9]+\\) > [1-9][0-9]* lines "
                             "dropped: stderr had no room for them"));
    close(channel.read);
    close(channel.written);
}

INSTANTIATE_TEST_SUITE_P(Log, LogOfStalledReader,
                         testing::Values(StalledReader{"Pipe", [] { return Pipe(0); }},
                                         StalledReader{"PipeThatDoesNotBlock", [] { return Pipe(O_NONBLOCK); }},
                                         StalledReader{"Socket", SocketPair},
                                         StalledReader{"StoppedTerminal", [] { return Terminal(true); }},
                                         StalledReader{"TerminalThatIsNotRead", [] { return Terminal(false); }},
                                         StalledReader{"PipeOfAnotherUser", [] { return Pipe(0); }, true},
                                         StalledReader{"StoppedTerminalOfAnotherUser", [] { return Terminal(true); },
                                                       true}),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(Log, EveryLineOfASlowReaderIsDeliveredOrCounted)
{
    constexpr int kLines = 5'000;
    const Channel channel = Pipe(0);
    int end[2];
    ASSERT_EQ(pipe(end), 0);
    fixtures::Process process([&] {
        dup2(channel.written, STDERR_FILENO);
        for (int line = 0; line < kLines; ++line) {
            dlog_print(DLOG_DEBUG, "T", "a line of a program that is faster than its reader");
        }
        close(end[1]);
        char byte = 0;
        while (read(end[0], &byte, 1) == 1) {
            dlog_print(DLOG_INFO, "T", "later");
        }
        _exit(0);
    });
    close(end[0]);
    std::string text;
    EXPECT_TRUE(Eventually([&] {
        text += Drain(channel.read);
        return write(end[1], "x", 1) == 1 && text.find("later") != std::string::npos;
    }));
    close(end[1]);
    EXPECT_EQ(process.Wait(), 0);
    long accounted = 0;
    std::istringstream lines(text.substr(0, text.find("I/T")));
    for (std::string line; std::getline(lines, line);) {
        const std::size_t count = line.find(" > ");
        accounted += line.front() == 'E' ? std::stol(line.substr(count + 3)) : 1;
    }
    EXPECT_EQ(accounted, kLines);
    close(channel.read);
    close(channel.written);
}

TEST(Log, TheFlagsOfASharedStderrStayAsTheyAre)
{
    const Channel channel = Pipe(0);
    const int before = fcntl(channel.written, F_GETFL);
    fixtures::Process process([&] {
        dup2(channel.written, STDERR_FILENO);
        dlog_print(DLOG_DEBUG, "T", "line");
        _exit(0);
    });
    EXPECT_EQ(process.Wait(), 0);
    EXPECT_EQ(fcntl(channel.written, F_GETFL), before);
    close(channel.read);
    close(channel.written);
}
