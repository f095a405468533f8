#include <dlog.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <string>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "Platform/desktop/base/LogOutput.h"
#include "Tests/Desktop/Fixtures.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// The output of another process on stderr, one element for each write, with its pid spelled
/// "PID" as it stands in a line's head.
class Writes {
public:
    explicit Writes(const std::function<void()>& work)
    {
        int ends[2];
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends), 0); // keeps the writes apart
        fixtures::Process process([&] {
            dup2(ends[1], STDERR_FILENO);
            work();
        });
        close(ends[1]);
        pid_ = process.Pid();
        std::vector<char> packet(1 << 20);
        for (ssize_t size = 0; (size = read(ends[0], packet.data(), packet.size())) > 0;) {
            all_.emplace_back(packet.data(), static_cast<std::size_t>(size));
        }
        close(ends[0]);
        status_ = process.Wait();
    }

    int Status() const { return status_; }
    std::vector<std::string> All() const
    {
        char head[32];
        std::snprintf(head, sizeof head, "(%5d): ", static_cast<int>(pid_));
        std::vector<std::string> result = all_;
        for (std::string& line : result) {
            const std::size_t at = line.find(head);
            if (at != std::string::npos) {
                line.replace(at, std::strlen(head), "(PID): ");
            }
        }
        return result;
    }

private:
    pid_t pid_ = 0;
    int status_ = -1;
    std::vector<std::string> all_;
};

struct Message {
    const char* name;
    std::string text;
    std::string line;
};

void PrintTo(const Message& message, std::ostream* out)
{
    *out << message.name;
}

class MessageText : public testing::TestWithParam<Message> {};

} // namespace

TEST_P(MessageText, BecomesOneLineInOneWrite)
{
    const Writes writes([] { dlog_print(DLOG_DEBUG, "Quillmere", "%s", GetParam().text.c_str()); });
    EXPECT_THAT(writes.All(), ElementsAre("D/Quillmere(PID): " + GetParam().line + "\n"));
}

INSTANTIATE_TEST_SUITE_P(
    Log, MessageText,
    testing::Values(Message{"Plain", "main.cpp: elm_main(61) > text", "main.cpp: elm_main(61) > text"},
                    Message{"Empty", "", ""}, Message{"LineEnd", "text\n", "text"},
                    Message{"DosLineEnd", "text\r\n", "text"}, Message{"OnlyALineEnd", "\n", ""},
                    Message{"BlankBeforeLineEnd", "is null \n", "is null "},
                    Message{"TwoLineEnds", "text\n\n", "text\\n"},
                    Message{"LeadingLineEnd", "\n### KEY ###\n", "\\n### KEY ###"}, Message{"Tab", "a\tb", "a\\tb"},
                    Message{"Return", "a\rb", "a\\rb"}, Message{"TerminalCommand", "\x1b[2J", "\\x1b[2J"},
                    Message{"Delete", "a\x7f", "a\\x7f"},
                    Message{"C1Command",
                            "a\xc2\x9b"
                            "2J",
                            "a\\xc2\\x9b2J"},
                    Message{"C1CommandInOneByte",
                            "a\x9b"
                            "2J",
                            "a\\x9b2J"},
                    Message{"ByteOrderMark", "a\ufeffb", "a\\xef\\xbb\\xbfb"},
                    Message{"DirectionOverride", "a\u202eb", "a\\xe2\\x80\\xaeb"},
                    Message{"ZeroWidthSpace", "a\u200bb", "a\\xe2\\x80\\x8bb"},
                    Message{"LineSeparator", "a\u2028b", "a\\xe2\\x80\\xa8b"},
                    Message{"VariationSelector", "a\ufe0fb", "a\\xef\\xb8\\x8fb"},
                    Message{"Filler", "a\u3164b", "a\\xe3\\x85\\xa4b"}, Message{"Utf8", "Größe 电视", "Größe 电视"},
                    Message{"CombiningMark", "e\u0301", "e\u0301"}, Message{"NotUtf8", "a\xff\xfe", "a\\xff\\xfe"},
                    Message{"CutShort", "a\xe7\x94", "a\\xe7\\x94"}, Message{"PerCent", "100% %s %n", "100% %s %n"},
                    Message{"JustTooLong", std::string(512, 'x'), std::string(512, 'x')},
                    Message{"VeryLong", std::string(100'000, 'x') + "\n", std::string(100'000, 'x')},
                    Message{"VeryLongWithControls", std::string(100'000, '\t'),
                            [] {
                                std::string text;
                                for (int i = 0; i < 100'000; ++i) {
                                    text += "\\t";
                                }
                                return text;
                            }()}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(Log, EveryLengthAroundTheUsualOneIsWhole)
{
    constexpr int kLongest = 600;
    const Writes writes([] {
        for (int length = 400; length <= kLongest; ++length) {
            dlog_print(DLOG_DEBUG, "T", "%0*d\n", length, 7);
        }
    });
    std::vector<std::string> expected;
    for (std::size_t length = 400; length <= kLongest; ++length) {
        expected.push_back("D/T(PID): " + std::string(length - 1, '0') + "7\n");
    }
    EXPECT_EQ(writes.All(), expected);
}

TEST(Log, NullTagIsAnEmptyTag)
{
    const Writes writes([] { dlog_print(DLOG_DEBUG, nullptr, "text"); });
    EXPECT_THAT(writes.All(), ElementsAre("D/(PID): text\n"));
}

TEST(Log, ATagCannotBreakTheLine)
{
    const Writes writes([] { dlog_print(DLOG_DEBUG, "a\nb", "text"); });
    EXPECT_THAT(writes.All(), ElementsAre("D/a\\nb(PID): text\n"));
}

TEST(Log, EachPriorityHasItsLetter)
{
    const Writes writes([] {
        for (const log_priority priority : {DLOG_DEBUG, DLOG_INFO, DLOG_WARN, DLOG_ERROR, DLOG_FATAL}) {
            dlog_print(priority, "T", "x");
        }
    });
    EXPECT_THAT(writes.All(),
                ElementsAre("D/T(PID): x\n", "I/T(PID): x\n", "W/T(PID): x\n", "E/T(PID): x\n", "F/T(PID): x\n"));
}

TEST(Log, ThresholdDropsWhatIsBelow)
{
    struct Case {
        const char* level;
        std::string letters;
    };
    for (const Case& test : {Case{"debug", "DIWE"}, {"info", "IWE"}, {"warn", "WE"}, {"error", "E"}, {"silent", ""}}) {
        const fixtures::Variable level("DLOG_LEVEL", test.level);
        const Writes writes([] {
            for (const log_priority priority : {DLOG_DEBUG, DLOG_INFO, DLOG_WARN, DLOG_ERROR}) {
                dlog_print(priority, "T", "x");
            }
        });
        std::string letters;
        for (const std::string& line : writes.All()) {
            letters += line.front();
        }
        EXPECT_EQ(letters, test.letters) << test.level;
    }
}

TEST(Log, AnUnknownThresholdIsReportedOnceAndLogsAll)
{
    const fixtures::Variable level("DLOG_LEVEL", "verbos");
    const Writes writes([] {
        dlog_print(DLOG_DEBUG, "T", "a");
        dlog_print(DLOG_DEBUG, "T", "b");
    });
    ASSERT_EQ(writes.All().size(), 3U);
    EXPECT_THAT(writes.All()[0], testing::MatchesRegex("W/Platform\\(PID\\): Log.cpp: ReadThreshold\\([0-9]+\\) > "
                                                       "DLOG_LEVEL is \"verbos\"; expected debug, info, warn, error or "
                                                       "silent: taking debug\n"));
    EXPECT_EQ(writes.All()[1], "D/T(PID): a\n");
    EXPECT_EQ(writes.All()[2], "D/T(PID): b\n");
}

TEST(Log, ADroppedLineIsNotFormatted)
{
    const fixtures::Variable level("DLOG_LEVEL", "error");
    const Writes writes([] {
        const char* unreadable = reinterpret_cast<const char*>(1);
        dlog_print(DLOG_WARN, "T", "%s", unreadable);
    });
    EXPECT_EQ(writes.Status(), 0);
    EXPECT_THAT(writes.All(), IsEmpty());
}

TEST(Log, ReturnsTheBytesWritten)
{
    const Writes writes([] {
        char expected[64];
        const int size = std::snprintf(expected, sizeof expected, "D/T(%5d): text\n", static_cast<int>(getpid()));
        _exit(dlog_print(DLOG_DEBUG, "T", "text\n") == size ? 0 : 1);
    });
    EXPECT_EQ(writes.Status(), 0);
}

TEST(Log, ErrnoIsTheCallersBeforeAndAfter)
{
    const Writes writes([] {
        errno = EDOM;
        dlog_print(DLOG_DEBUG, "T", "%s", std::strerror(errno));
        const bool kept = errno == EDOM;
        close(STDERR_FILENO);
        desktop::ExamineStandardError();
        errno = EDOM;
        const int result = dlog_print(DLOG_DEBUG, "T", "lost");
        _exit(kept && errno == EDOM && result < 0 ? 0 : 1);
    });
    EXPECT_EQ(writes.Status(), 0);
    EXPECT_THAT(writes.All(), ElementsAre("D/T(PID): " + std::string(std::strerror(EDOM)) + "\n"));
}

TEST(Log, AReaderThatWentAwayDoesNotEndTheProgram)
{
    fixtures::Process process([] {
        int ends[2];
        if (pipe(ends) != 0) {
            _exit(2);
        }
        dup2(ends[1], STDERR_FILENO);
        close(ends[0]);
        const int result = dlog_print(DLOG_DEBUG, "T", "lost");
        sigset_t pending;
        sigpending(&pending);
        sigset_t blocked;
        pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
        _exit(result < 0 && sigismember(&pending, SIGPIPE) == 0 && sigismember(&blocked, SIGPIPE) == 0 ? 0 : 1);
    });
    EXPECT_EQ(process.Wait(), 0);
}

TEST(Log, AReaderThatWentAwayLaterDoesNotEndTheProgramEither)
{
    fixtures::Process process([] {
        int ends[2];
        if (pipe(ends) != 0) {
            _exit(2);
        }
        dup2(ends[1], STDERR_FILENO);
        const bool delivered = dlog_print(DLOG_DEBUG, "T", "read") > 0;
        close(ends[0]);
        _exit(delivered && dlog_print(DLOG_DEBUG, "T", "lost") < 0 ? 0 : 1);
    });
    EXPECT_EQ(process.Wait(), 0);
}

TEST(Log, AFileThatTakesTheNumberOfStderrIsNotWrittenTo)
{
    const fixtures::TemporaryFolder folder;
    const std::string file = folder / "data";
    const Writes writes([&] {
        dlog_print(DLOG_DEBUG, "T", "before");
        close(STDERR_FILENO);
        const bool taken = open(file.c_str(), O_WRONLY | O_CREAT, 0600) == STDERR_FILENO;
        dlog_print(DLOG_DEBUG, "T", "after");
        _exit(taken ? 0 : 1);
    });
    EXPECT_EQ(writes.Status(), 0);
    EXPECT_EQ(fixtures::ReadFile(file), "");
    EXPECT_THAT(writes.All(), ElementsAre("D/T(PID): before\n", "D/T(PID): after\n"));
}

TEST(Log, AClosedStderrIsNotReplacedByAnotherFile)
{
    const fixtures::TemporaryFolder folder;
    const std::string file = folder / "data";
    fixtures::Process process([&] {
        close(STDERR_FILENO);
        const bool lost = dlog_print(DLOG_DEBUG, "T", "lost") < 0;
        const int opened = open(file.c_str(), O_WRONLY | O_CREAT, 0600);
        dlog_print(DLOG_DEBUG, "T", "lost");
        _exit(lost && opened > STDERR_FILENO ? 0 : 1);
    });
    EXPECT_EQ(process.Wait(), 0);
    EXPECT_EQ(fixtures::ReadFile(file), "");
}

TEST(Log, AForkedChildHasItsOwnId)
{
    const Writes writes([] {
        dlog_print(DLOG_DEBUG, "T", "parent");
        const pid_t child = fork();
        if (child == 0) {
            dlog_print(DLOG_DEBUG, "T", "%5d", static_cast<int>(getpid()));
            _exit(0);
        }
        waitpid(child, nullptr, 0);
        dlog_print(DLOG_DEBUG, "T", "parent");
    });
    ASSERT_EQ(writes.All().size(), 3U);
    EXPECT_EQ(writes.All()[0], "D/T(PID): parent\n");
    EXPECT_EQ(writes.All()[2], "D/T(PID): parent\n");
    const std::string ofChild = writes.All()[1];
    const std::string number = ofChild.substr(ofChild.find(": ") + 2, ofChild.size() - ofChild.find(": ") - 3);
    EXPECT_EQ(ofChild, "D/T(" + number + "): " + number + "\n");
}

TEST(Log, LinesOfSeveralThreadsStayWhole)
{
    constexpr int kThreads = 4;
    constexpr int kLines = 500;
    const Writes writes([] {
        std::vector<std::thread> threads;
        threads.reserve(kThreads);
        for (int i = 0; i < kThreads; ++i) {
            threads.emplace_back([i] {
                for (int line = 0; line < kLines; ++line) {
                    dlog_print(DLOG_DEBUG, "T", "%s", std::string(300, static_cast<char>('a' + i)).c_str());
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    });
    std::map<char, int> counts;
    for (const std::string& line : writes.All()) {
        const char letter = line[line.size() - 2];
        EXPECT_EQ(line, "D/T(PID): " + std::string(300, letter) + "\n");
        ++counts[letter];
    }
    EXPECT_THAT(counts, ElementsAre(testing::Pair('a', kLines), testing::Pair('b', kLines), testing::Pair('c', kLines),
                                    testing::Pair('d', kLines)));
}

namespace {

std::string OnTerminal(log_priority priority)
{
    int terminal = -1;
    const pid_t pid = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (pid == 0) {
        dlog_print(priority, "T", "x");
        _exit(0);
    }
    std::string all;
    char part[256];
    for (ssize_t size = 0; (size = read(terminal, part, sizeof part)) > 0;) {
        all.append(part, static_cast<std::size_t>(size));
    }
    close(terminal);
    waitpid(pid, nullptr, 0);
    char head[32];
    std::snprintf(head, sizeof head, "(%5d): ", static_cast<int>(pid));
    const std::size_t at = all.find(head);
    return at == std::string::npos ? all : all.replace(at, std::strlen(head), "(PID): ");
}

} // namespace

TEST(Log, ColoursAreForTerminalsWhoseOwnerWantsThem)
{
    const fixtures::Variable terminal("TERM", "xterm");
    const fixtures::Variable noColor("NO_COLOR");
    EXPECT_EQ(OnTerminal(DLOG_ERROR), "\x1b[31mE/T(PID): x\x1b[0m\r\n");
    EXPECT_EQ(OnTerminal(DLOG_WARN), "\x1b[33mW/T(PID): x\x1b[0m\r\n");
    {
        const fixtures::Variable refused("NO_COLOR", "1");
        EXPECT_EQ(OnTerminal(DLOG_ERROR), "E/T(PID): x\r\n");
    }
    const fixtures::Variable dumb("TERM", "dumb");
    EXPECT_EQ(OnTerminal(DLOG_ERROR), "E/T(PID): x\r\n");
}
