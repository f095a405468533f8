#include <aul.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Platform/desktop/app/Launcher.h"
#include "Platform/desktop/environment/OwnEnvironment.h"
#include "Tests/Desktop/Fixtures.h"

using fixtures::Eventually;
using fixtures::ReadFile;
using fixtures::WriteFile;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;

using desktop::LaunchError;

namespace {

constexpr char kId[] = "org.example.companion";

int Code(LaunchError error)
{
    return static_cast<int>(error);
}

/// GLib asks for the data folders once per process: all tests share these.
class DataFolders : public testing::Environment {
public:
    static const std::string& Path()
    {
        static const fixtures::TemporaryFolder folder;
        return folder.Path();
    }
    void SetUp() override
    {
        setenv("XDG_DATA_HOME", (Path() + "/home").c_str(), 1);
        setenv("XDG_DATA_DIRS", (Path() + "/system").c_str(), 1);
    }
};

const testing::Environment* const dataFolders = testing::AddGlobalTestEnvironment(new DataFolders);

class Launcher : public testing::Test {
protected:
    void SetUp() override
    {
        WriteFile(Program(), "#!/bin/sh\nprintf '%s|' \"$@\" >> " + Output() + "\necho >> " + Output() + "\n");
        chmod(Program().c_str(), 0755);
    }
    void TearDown() override
    {
        while (waitpid(-1, nullptr, 0) > 0) {
        }
        std::filesystem::remove_all(DataFolders::Path() + "/home");
        std::filesystem::remove_all(DataFolders::Path() + "/system");
    }

    std::string Program() const { return folder_ / "companion"; }
    std::string Output() const { return folder_ / "output"; }
    static std::string Entry(const std::string& where = "home")
    {
        return DataFolders::Path() + "/" + where + "/applications/" + kId + ".desktop";
    }
    static void WriteEntry(const std::string& exec, const std::string& more = "", const std::string& where = "home")
    {
        WriteFile(Entry(where), "[Desktop Entry]\nType=Application\nName=The Companion\nExec=" + exec + "\n" + more);
    }
    /// Launches, and returns the output of the program.
    std::string Launched(int lines = 1) const
    {
        const pid_t pid = aul_launch_app(kId, nullptr);
        EXPECT_GT(pid, 0);
        int status = -1;
        EXPECT_EQ(waitpid(pid, &status, 0), pid);
        EXPECT_EQ(status, 0);
        std::string text = ReadFile(Output());
        EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), lines);
        return text;
    }
    /// The result of a launch that fails, and the one line about it.
    static std::pair<int, std::string> Failed(const char* id = kId)
    {
        fixtures::CapturedLog log;
        const int result = aul_launch_app(id, nullptr);
        std::string line = log.Text();
        EXPECT_EQ(std::count(line.begin(), line.end(), '\n'), 1) << line;
        EXPECT_THAT(line, MatchesRegex("E/Platform\\( *[0-9]+\\): Launcher.cpp: .*\n"));
        line = line.substr(line.find(" > ") + 3);
        line.pop_back();
        return {result, line};
    }

    fixtures::TemporaryFolder folder_;
};

} // namespace

TEST_F(Launcher, StartsTheEntrysProgramAndGivesItsPid)
{
    WriteEntry("/bin/sh -c \"echo \\\\$\\\\$ > " + Output() + "\"");
    const pid_t pid = aul_launch_app(kId, nullptr);
    ASSERT_GT(pid, 0);
    EXPECT_TRUE(Eventually([&] { return ReadFile(Output()) == std::to_string(pid) + "\n"; }));
}

TEST_F(Launcher, FieldCodesAreReplacedAndNothingIsLeftToAShell)
{
    struct Case {
        std::string exec;
        std::string arguments;
    };
    const std::string more = "Icon=the icon\n";
    for (const Case& test : {Case{"", "|"},
                             {" a b", "a|b|"},
                             {" \"a b\" c", "a b|c|"},
                             {" %f %F %u %U %d %D %n %N %v %m a", "a|"},
                             {" --file=%f a%Ub", "--file=|ab|"},
                             {" 100%%", "100%|"},
                             {" %c", "The Companion|"},
                             {" --name=%c", "--name=The Companion|"},
                             {" %i", "--icon|the icon|"},
                             {" %k", Entry() + "|"},
                             {" a %", "a|%|"},
                             {" \\\\$HOME ; touch /tmp/x", "$HOME|;|touch|/tmp/x|"}}) {
        std::filesystem::remove(Output());
        WriteEntry(Program() + test.exec, more);
        EXPECT_EQ(Launched(), test.arguments + "\n") << test.exec;
    }
}

TEST_F(Launcher, FindsTheProgramThroughPath)
{
    const fixtures::Variable path("PATH", folder_.Path() + ":" + std::getenv("PATH"));
    WriteEntry("companion x");
    EXPECT_EQ(Launched(), "x|\n");
}

TEST_F(Launcher, TheUsersEntryComesBeforeTheSystems)
{
    WriteEntry(Program() + " system", "", "system");
    EXPECT_EQ(Launched(1), "system|\n");
    WriteEntry(Program() + " home");
    EXPECT_EQ(Launched(2), "system|\nhome|\n");
    std::filesystem::remove(Entry());
    EXPECT_EQ(Launched(3), "system|\nhome|\nsystem|\n");
}

TEST_F(Launcher, EachLaunchFollowsTheEntryAsItIsThen)
{
    EXPECT_EQ(Failed().first, Code(LaunchError::kNoEntry));
    std::string expected;
    // Without a pause: contents of equal length, written within one tick of the clock.
    for (int i = 10; i < 40; ++i) {
        WriteEntry(Program() + " " + std::to_string(i));
        expected += std::to_string(i) + "|\n";
        EXPECT_EQ(Launched(i - 9), expected);
    }
    std::filesystem::remove(Entry());
    EXPECT_EQ(Failed().first, Code(LaunchError::kNoEntry));
}

TEST_F(Launcher, AnUnchangedEntryIsNotReadAgain)
{
    WriteEntry(Program());
    usleep(100'000); // an entry that was written just now is not trusted
    const int opens = inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
    ASSERT_GE(inotify_add_watch(opens, Entry().c_str(), IN_OPEN), 0);
    const auto wasOpened = [opens] {
        char events[4096];
        return read(opens, events, sizeof events) > 0;
    };
    desktop::Launcher launcher;
    ASSERT_TRUE(launcher.Launch(kId));
    EXPECT_TRUE(wasOpened());
    ASSERT_TRUE(launcher.Launch(kId));
    ASSERT_TRUE(launcher.Launch(kId));
    EXPECT_FALSE(wasOpened());
    std::filesystem::last_write_time(Entry(), std::filesystem::file_time_type::clock::now());
    ASSERT_TRUE(launcher.Launch(kId));
    EXPECT_TRUE(wasOpened());
    close(opens);
}

/// Where the entries lie of a program that is installed as this one lies in its build folder.
std::string InstalledEntries()
{
    return std::filesystem::read_symlink("/proc/self/exe").parent_path().parent_path() / "share/applications";
}

TEST_F(Launcher, AMissingEntryNamesTheFolders)
{
    const auto [result, line] = Failed();
    EXPECT_EQ(result, Code(LaunchError::kNoEntry));
    EXPECT_EQ(line, std::string("no entry \"") + kId + ".desktop\" in " + DataFolders::Path() + "/home/applications, " +
                        DataFolders::Path() + "/system/applications, " + InstalledEntries());
}

TEST_F(Launcher, AHiddenEntryHidesTheSystemsOne)
{
    WriteEntry(Program(), "", "system");
    WriteEntry(Program(), "Hidden=true\n");
    const auto [result, line] = Failed();
    EXPECT_EQ(result, Code(LaunchError::kNoEntry));
    EXPECT_EQ(line, std::string("no entry \"") + kId + ".desktop\": " + Entry() + " hides it");
}

TEST_F(Launcher, AMissingProgramIsNamed)
{
    WriteEntry("no-such-program-here %U");
    auto [result, line] = Failed();
    EXPECT_EQ(result, Code(LaunchError::kNoProgram));
    EXPECT_EQ(line, Entry() + ": program missing: no-such-program-here");

    WriteEntry(Program(), "TryExec=no-such-program-here\n");
    std::tie(result, line) = Failed();
    EXPECT_EQ(result, Code(LaunchError::kNoProgram));
    EXPECT_EQ(line, Entry() + ": not installed: no program no-such-program-here (TryExec)");
}

TEST_F(Launcher, AProgramThatComesAndGoesIsNoticed)
{
    WriteEntry(Program());
    EXPECT_EQ(Launched(1), "|\n");
    std::filesystem::rename(Program(), Program() + ".away");
    EXPECT_EQ(Failed().first, Code(LaunchError::kNoProgram));
    std::filesystem::rename(Program() + ".away", Program());
    EXPECT_EQ(Launched(2), "|\n|\n");
}

TEST_F(Launcher, AnInvalidEntryIsReportedWithItsReason)
{
    struct Case {
        std::string content;
        std::string why;
    };
    for (const Case& test :
         {Case{"", "Key file does not have group"},
          {"no group\n", "Key file"},
          {"[Desktop Entry]\nType=Link\nExec=/bin/true\n", "not an application's entry (Type)"},
          {"[Desktop Entry]\nType=Application\n", "no command line (Exec)"},
          {"[Desktop Entry]\nType=Application\nExec=%U\n", "the command line (Exec) names no program"},
          {"[Desktop Entry]\nType=Application\nExec=/bin/sh \"a\n", "matching quote"},
          {std::string("\x7f"
                       "ELF\0\0\xff",
                       7),
           "Key file"}}) {
        WriteFile(Entry(), test.content);
        const auto [result, line] = Failed();
        EXPECT_EQ(result, Code(LaunchError::kBadEntry)) << test.content;
        EXPECT_THAT(line, HasSubstr(Entry() + ": ")) << test.content;
        if (!test.content.empty() && test.why != "Key file") {
            EXPECT_THAT(line, HasSubstr(test.why));
        }
    }
}

TEST_F(Launcher, AnEntryMustBeAPlainFile)
{
    std::filesystem::create_directories(Entry());
    EXPECT_EQ(Failed().second, Entry() + ": not a plain file");
    std::filesystem::remove(Entry());
    ASSERT_EQ(mkfifo(Entry().c_str(), 0600), 0);
    EXPECT_EQ(Failed().first, Code(LaunchError::kBadEntry));
    std::filesystem::remove(Entry());
    WriteEntry(Program());
    std::filesystem::resize_file(Entry(), 1ULL << 30U);
    EXPECT_EQ(Failed().second, Entry() + ": too large for a desktop entry");
}

TEST_F(Launcher, AFailedStartIsReportedWithItsReason)
{
    WriteFile(Program(), "no program");
    WriteEntry(Program());
    auto [result, line] = Failed();
    EXPECT_EQ(result, Code(LaunchError::kNotStarted));
    EXPECT_EQ(line, Entry() + ": cannot start " + Program() + ": Exec format error");

    WriteEntry("/bin/true", "Path=/no/such/folder\n");
    std::tie(result, line) = Failed();
    EXPECT_EQ(result, Code(LaunchError::kNotStarted));
    EXPECT_EQ(line, Entry() + ": cannot start /bin/true in /no/such/folder: No such file or directory");
}

TEST_F(Launcher, IdsCannotLeaveTheFolders)
{
    for (const char* id : {"", "../x", "a/b", "/etc/passwd", ".x", static_cast<const char*>(nullptr)}) {
        EXPECT_EQ(Failed(id).first, Code(LaunchError::kBadId));
    }
}

TEST_F(Launcher, TheProgramInheritsNothing)
{
    WriteFile(Program(), "#!/bin/sh\nexec > " + Output() +
                             "\npwd\ncut -d' ' -f5 /proc/$$/stat\necho $$\ngrep -E '^Sig(Blk|Ign)' /proc/self/status\n"
                             "for fd in /proc/$$/fd/*; do echo ${fd##*/} $(readlink $fd); done\nenv\n");
    chmod(Program().c_str(), 0755);
    WriteEntry(Program(), "Path=/usr\n");

    const int leak = open("/dev/zero", O_RDONLY); // without close-on-exec, on purpose
    ASSERT_GT(leak, 2);
    const int high = fcntl(leak, F_DUPFD, 200);
    sigset_t blocked;
    sigset_t before;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGTERM);
    sigprocmask(SIG_BLOCK, &blocked, &before);
    signal(SIGPIPE, SIG_IGN);
    signal(SIGHUP, SIG_IGN);
    const fixtures::Variable theirs("TEST_THEIRS", "kept");
    const fixtures::Variable startup("DESKTOP_STARTUP_ID", "ours");
    const fixtures::Variable notify("NOTIFY_SOCKET", "/ours");
    {
        const fixtures::Variable found("TEST_FOUND", "as found");
        desktop::SetOwnVariable("TEST_FOUND", "changed");
        desktop::SetOwnVariable("TEST_FOUND", "changed again");
        desktop::SetOwnVariable("TEST_OWN", "new");
    }
    const pid_t pid = aul_launch_app(kId, nullptr);
    sigprocmask(SIG_SETMASK, &before, nullptr);
    signal(SIGPIPE, SIG_DFL);
    signal(SIGHUP, SIG_DFL);
    close(leak);
    close(high);
    ASSERT_GT(pid, 0);
    waitpid(pid, nullptr, 0);

    const std::string output = ReadFile(Output());
    const std::string self = std::to_string(pid);
    EXPECT_THAT(output, testing::StartsWith("/usr\n" + self + "\n" + self + "\n")); // its own process group
    EXPECT_THAT(output, HasSubstr("SigBlk:\t0000000000000000\n"));
    // glibc leaves its two internal signals ignored in every spawned process.
    const unsigned long long internalSignals = 3ULL << 31U;
    EXPECT_EQ(std::stoull(output.substr(output.find("SigIgn:") + 8), nullptr, 16) & ~internalSignals, 0U);
    EXPECT_THAT(output, HasSubstr("\n0 /dev/null\n1 " + Output() + "\n"));
    EXPECT_THAT(output, HasSubstr("\n2 /dev/null\n"));
    EXPECT_THAT(output, Not(HasSubstr("/dev/zero")));
    EXPECT_THAT(output, HasSubstr("\nTEST_THEIRS=kept\n"));
    EXPECT_THAT(output, HasSubstr("\nTEST_FOUND=as found\n"));
    EXPECT_THAT(output, Not(HasSubstr("TEST_OWN=")));
    EXPECT_THAT(output, Not(HasSubstr("DESKTOP_STARTUP_ID")));
    EXPECT_THAT(output, Not(HasSubstr("NOTIFY_SOCKET")));
}

TEST_F(Launcher, EndlessOutputOfAProgramIsDiscarded)
{
    WriteEntry("/bin/sh -c \"head -c 100000000 /dev/zero; head -c 1000000 /dev/zero >&2; echo done > " + Output() +
               "\"");
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const pid_t pid = aul_launch_app(kId, nullptr);
    waitpid(pid, nullptr, 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(ReadFile(Output()), "done\n");
}

TEST_F(Launcher, ManyLaunchesLeaveNoDescriptorsBehind)
{
    WriteEntry("/bin/true");
    const auto count = [] {
        const auto entries = std::filesystem::directory_iterator("/proc/self/fd");
        return std::distance(begin(entries), end(entries));
    };
    ASSERT_GT(aul_launch_app(kId, nullptr), 0);
    const auto before = count();
    for (int i = 0; i < 200; ++i) {
        ASSERT_GT(aul_launch_app(kId, nullptr), 0);
    }
    EXPECT_EQ(count(), before);
}
