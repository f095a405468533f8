#include "Platform/desktop/base/SettingsStore.h"

#include <climits>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <sys/file.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vconf.h>
#include <vector>

#include "Platform/desktop/base/Settings.h"
#include "Tests/Desktop/Fixtures.h"

using fixtures::Exists;
using fixtures::ReadFile;
using fixtures::WriteFile;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

constexpr char kKey[] = "db/menu/syncdemo/state";
constexpr int kUntouched = 4711;

class SettingsStore : public testing::Test {
protected:
    std::string File(const std::string& key = kKey) const { return folder_ / "tvsettings/" + key; }
    static int GetInt(const char* key = kKey)
    {
        int value = kUntouched;
        const int result = vconf_get_int(key, &value);
        EXPECT_EQ(result, value == kUntouched ? -1 : 0);
        return value;
    }
    static std::string GetText(const char* key = kKey)
    {
        const std::unique_ptr<char, void (*)(void*)> text(vconf_get_str(key), std::free);
        return text != nullptr ? text.get() : "<null>";
    }
    std::vector<std::string> Files() const
    {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(File("db/menu/syncdemo"))) {
            names.push_back(entry.path().filename());
        }
        return names;
    }

    fixtures::TemporaryFolder folder_;
    fixtures::Variable configuration_{"XDG_CONFIG_HOME", folder_.Path()};
};

/// The bytes that this process has read from files so far.
std::uint64_t BytesRead()
{
    std::ifstream counters("/proc/self/io");
    std::string name;
    std::uint64_t bytes = 0;
    EXPECT_TRUE(counters >> name >> bytes && name == "rchar:");
    return bytes;
}

mode_t ModeOf(const std::string& path)
{
    struct stat status {};
    EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777;
}

} // namespace

TEST_F(SettingsStore, ANumberIsAFileThatHoldsIt)
{
    EXPECT_EQ(vconf_set_int(kKey, 1), 0);
    EXPECT_EQ(ReadFile(File()), "1");
    EXPECT_EQ(GetInt(), 1);
}

TEST_F(SettingsStore, NumbersComeBack)
{
    for (const int value : {0, 1, -1, 2, INT_MAX, INT_MIN}) {
        EXPECT_EQ(vconf_set_int(kKey, value), 0);
        EXPECT_EQ(GetInt(), value);
    }
}

TEST_F(SettingsStore, TextsComeBack)
{
    for (const std::string& text : {std::string("en_US.UTF-8"), std::string(), std::string("a\n"), std::string("\n\n"),
                                    std::string(" a b "), std::string(desktop::kLargestValue, 'x')}) {
        EXPECT_EQ(vconf_set_str("db/menu_widget/language", text.c_str()), 0);
        EXPECT_EQ(GetText("db/menu_widget/language"), text);
    }
}

TEST_F(SettingsStore, AnEditorsLineEndIsNotPartOfAText)
{
    WriteFile(File(), "ko_KR\n");
    EXPECT_EQ(GetText(), "ko_KR");
}

TEST_F(SettingsStore, OnlyAWholeNumberIsANumber)
{
    struct Case {
        std::string content;
        int value;
    };
    for (const Case& test : {Case{"1", 1},
                             {"1\n", 1},
                             {" 1\t\r\n", 1},
                             {"-1", -1},
                             {"007", 7},
                             {"2147483647", INT_MAX},
                             {"", kUntouched},
                             {"\n", kUntouched},
                             {"x", kUntouched},
                             {"1x", kUntouched},
                             {"1 2", kUntouched},
                             {"1.0", kUntouched},
                             {"+1", kUntouched},
                             {"0x1", kUntouched},
                             {"--1", kUntouched},
                             {"-", kUntouched},
                             {"2147483648", kUntouched},
                             {"99999999999999999999", kUntouched},
                             {std::string("1\0", 2), kUntouched},
                             {std::string("\xff\xfe\x31\x00", 4), kUntouched},
                             {"1" + std::string(5000, ' '), kUntouched}}) {
        WriteFile(File(), test.content);
        EXPECT_EQ(GetInt(), test.value) << test.content.substr(0, 40);
    }
}

TEST_F(SettingsStore, AnAbsentSettingIsAFailure)
{
    EXPECT_EQ(GetInt(), kUntouched);
    EXPECT_EQ(vconf_get_str(kKey), nullptr);
    EXPECT_EQ(desktop::LastSettingsError(), File() + ": No such file or directory");
}

TEST_F(SettingsStore, ATextWithAZeroByteIsRefused)
{
    WriteFile(File(), std::string("a\0b", 3));
    EXPECT_EQ(vconf_get_str(kKey), nullptr);
}

TEST_F(SettingsStore, KeysCannotLeaveTheFolder)
{
    const std::string secret = folder_ / "secret";
    WriteFile(secret, "1");
    const std::string longPart(256, 'a');
    std::string deep = "a";
    while (deep.size() <= desktop::kLongestKey) {
        deep += "/a";
    }
    for (const std::string& key :
         {std::string(), std::string("/"), secret, std::string("../secret"), std::string("a/../../secret"),
          std::string("a..b"), std::string("."), std::string("./a"), std::string("a/./b"), std::string("a//b"),
          std::string("a/"), std::string(".new"), std::string("a/.b"), longPart, deep}) {
        EXPECT_EQ(GetInt(key.c_str()), kUntouched) << key;
        EXPECT_EQ(vconf_set_int(key.c_str(), 2), -1) << key;
        EXPECT_EQ(vconf_set_str(key.c_str(), "2"), -1) << key;
        EXPECT_EQ(vconf_get_str(key.c_str()), nullptr) << key;
        EXPECT_THAT(desktop::LastSettingsError(), HasSubstr("not a key"));
    }
    EXPECT_EQ(ReadFile(secret), "1");
    EXPECT_FALSE(Exists(folder_ / "tvsettings"));
}

TEST_F(SettingsStore, NullPointersAreFailures)
{
    int value = kUntouched;
    EXPECT_EQ(vconf_get_int(nullptr, &value), -1);
    EXPECT_EQ(vconf_get_int(kKey, nullptr), -1);
    EXPECT_EQ(vconf_get_str(nullptr), nullptr);
    EXPECT_EQ(vconf_set_int(nullptr, 1), -1);
    EXPECT_EQ(vconf_set_str(nullptr, "1"), -1);
    EXPECT_EQ(vconf_set_str(kKey, nullptr), -1);
}

TEST_F(SettingsStore, NewFoldersAndFilesArePrivate)
{
    const mode_t before = umask(0);
    EXPECT_EQ(vconf_set_int(kKey, 1), 0);
    umask(before);
    for (const char* folder : {"tvsettings", "tvsettings/db", "tvsettings/db/menu", "tvsettings/db/menu/syncdemo"}) {
        EXPECT_EQ(ModeOf(folder_ / folder), 0700U) << folder;
    }
    EXPECT_EQ(ModeOf(File()), 0600U);
}

TEST_F(SettingsStore, ExistingFoldersKeepTheirMode)
{
    constexpr mode_t kShared = 03775;
    std::filesystem::create_directories(folder_ / "shared/db");
    std::filesystem::create_symlink(folder_ / "shared", folder_ / "tvsettings");
    for (const char* folder : {"shared", "shared/db"}) {
        ASSERT_EQ(chmod((folder_ / folder).c_str(), kShared), 0);
    }
    EXPECT_EQ(vconf_set_int(kKey, 1), 0);
    EXPECT_EQ(vconf_notify_key_changed(
                  kKey, [](keynode_t*, void*) {}, nullptr),
              0);
    for (const char* folder : {"shared", "shared/db"}) {
        EXPECT_EQ(ModeOf(folder_ / folder), kShared) << folder;
    }
    EXPECT_TRUE(std::filesystem::is_symlink(folder_ / "tvsettings"));
    EXPECT_EQ(ReadFile(folder_ / "shared/" + kKey), "1");
}

TEST_F(SettingsStore, AnExistingFileKeepsItsModeAndOwner)
{
    WriteFile(File(), "0");
    ASSERT_EQ(chmod(File().c_str(), 0664), 0);
    constexpr uid_t kAnotherUser = 4711;
    const bool root = geteuid() == 0;
    ASSERT_EQ(chown(File().c_str(), root ? kAnotherUser : geteuid(), root ? kAnotherUser : getegid()), 0);
    EXPECT_EQ(vconf_set_int(kKey, 1), 0);
    struct stat status {};
    ASSERT_EQ(stat(File().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0664U);
    EXPECT_EQ(status.st_uid, root ? kAnotherUser : geteuid());
    EXPECT_EQ(status.st_gid, root ? kAnotherUser : getegid());
}

TEST_F(SettingsStore, ASuccessClearsTheLastError)
{
    EXPECT_EQ(vconf_get_str(kKey), nullptr);
    EXPECT_NE(desktop::LastSettingsError(), "");
    EXPECT_EQ(vconf_set_int(kKey, 1), 0);
    EXPECT_EQ(desktop::LastSettingsError(), "");
    EXPECT_EQ(GetInt("db/absent"), kUntouched);
    EXPECT_NE(desktop::LastSettingsError(), "");
    EXPECT_EQ(GetInt(), 1);
    EXPECT_EQ(desktop::LastSettingsError(), "");
}

TEST_F(SettingsStore, TheFolderFollowsTheEnvironment)
{
    const fixtures::Variable home("HOME", folder_ / "home");
    EXPECT_EQ(desktop::SettingsFolder(), folder_ / "tvsettings");
    {
        const fixtures::Variable relative("XDG_CONFIG_HOME", "relative");
        EXPECT_EQ(desktop::SettingsFolder(), folder_ / "home/.config/tvsettings");
    }
    const fixtures::Variable unset("XDG_CONFIG_HOME");
    EXPECT_EQ(desktop::SettingsFolder(), folder_ / "home/.config/tvsettings");
    EXPECT_EQ(vconf_set_int(kKey, 1), 0);
    EXPECT_EQ(ReadFile(folder_ / "home/.config/tvsettings/" + kKey), "1");
    const fixtures::Variable homeless("HOME");
    EXPECT_EQ(desktop::SettingsFolder(), "");
    EXPECT_EQ(GetInt(), kUntouched);
    EXPECT_EQ(vconf_set_int(kKey, 1), -1);
    EXPECT_EQ(desktop::LastSettingsError(),
              "no settings folder: neither XDG_CONFIG_HOME nor HOME holds an absolute path");
}

TEST_F(SettingsStore, OnlyPlainFilesAreReadOrReplaced)
{
    struct Case {
        const char* name;
        std::function<void(const std::string& path)> put;
        const char* problem;
    };
    constexpr char kOther[] = ": not a plain file";
    constexpr char kLink[] = ": a symbolic link, not a plain file";
    const std::string target = folder_ / "target";
    WriteFile(target, "1");
    const Case cases[] = {
        {"folder", [](const std::string& path) { std::filesystem::create_directory(path); }, kOther},
        {"pipe", [](const std::string& path) { EXPECT_EQ(mkfifo(path.c_str(), 0600), 0); }, kOther},
        {"dangling link", [](const std::string& path) { std::filesystem::create_symlink("/nowhere", path); }, kLink},
        {"link", [&](const std::string& path) { std::filesystem::create_symlink(target, path); }, kLink},
    };
    std::filesystem::create_directories(File("db/menu/syncdemo"));
    for (const Case& test : cases) {
        test.put(File());
        EXPECT_EQ(GetInt(), kUntouched) << test.name;
        EXPECT_EQ(vconf_get_str(kKey), nullptr) << test.name;
        EXPECT_EQ(vconf_set_int(kKey, 2), -1) << test.name;
        EXPECT_EQ(desktop::LastSettingsError(), File() + test.problem) << test.name;
        EXPECT_THAT(Files(), ElementsAre("state")) << test.name;
        std::filesystem::remove(File());
    }
    EXPECT_EQ(ReadFile(target), "1");
}

TEST_F(SettingsStore, AHugeFileIsNotRead)
{
    WriteFile(File(), "1");
    ASSERT_EQ(truncate(File().c_str(), 1LL << 30), 0);
    const std::uint64_t before = BytesRead();
    EXPECT_EQ(GetInt(), kUntouched);
    EXPECT_EQ(vconf_get_str(kKey), nullptr);
    EXPECT_LT(BytesRead() - before, 100'000U);
    EXPECT_THAT(desktop::LastSettingsError(), HasSubstr("larger than a setting can be"));
    EXPECT_EQ(vconf_set_int(kKey, 1), 0);
    EXPECT_EQ(GetInt(), 1);
}

TEST_F(SettingsStore, AnOverlongTextIsRefusedAndTheOldOneStays)
{
    EXPECT_EQ(vconf_set_str(kKey, "old"), 0);
    EXPECT_EQ(vconf_set_str(kKey, std::string(desktop::kLargestValue + 1, 'x').c_str()), -1);
    EXPECT_EQ(GetText(), "old");
}

TEST_F(SettingsStore, WithoutDescriptorsNothingIsLost)
{
    EXPECT_EQ(vconf_set_int(kKey, 1), 0);
    fixtures::Process process([] {
        const rlimit none{3, 3};
        setrlimit(RLIMIT_NOFILE, &none);
        int value = kUntouched;
        const bool failed = vconf_get_int(kKey, &value) == -1 && value == kUntouched && vconf_set_int(kKey, 2) == -1;
        _exit(failed && desktop::LastSettingsError().find("Too many open files") != std::string::npos ? 0 : 1);
    });
    EXPECT_EQ(process.Wait(), 0);
    EXPECT_EQ(GetInt(), 1);
    EXPECT_THAT(Files(), ElementsAre("state"));
}

TEST_F(SettingsStore, AWriteThatDoesNotFitKeepsTheOldValue)
{
    EXPECT_EQ(vconf_set_int(kKey, 1), 0);
    fixtures::Process process([] {
        signal(SIGXFSZ, SIG_IGN);
        const rlimit none{0, 0};
        setrlimit(RLIMIT_FSIZE, &none);
        _exit(vconf_set_int(kKey, 2) == -1 ? 0 : 1);
    });
    EXPECT_EQ(process.Wait(), 0);
    EXPECT_EQ(GetInt(), 1);
    EXPECT_THAT(Files(), ElementsAre("state"));
}

TEST_F(SettingsStore, LeftoversAreIgnoredAndClearedUpUnlessTheyAreInUse)
{
    EXPECT_EQ(vconf_set_int(kKey, 1), 0);
    WriteFile(File("db/menu/syncdemo/.tvsettings-new-Dead01"), "9");
    const std::string inUse = File("db/menu/syncdemo/.tvsettings-new-Live01");
    WriteFile(inUse, "9");
    const int writer = open(inUse.c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(flock(writer, LOCK_EX), 0);
    EXPECT_EQ(GetInt(), 1);
    EXPECT_EQ(vconf_set_int(kKey, 2), 0);
    EXPECT_THAT(Files(), testing::UnorderedElementsAre("state", ".tvsettings-new-Live01"));
    close(writer);
    EXPECT_EQ(vconf_set_int(kKey, 3), 0);
    EXPECT_THAT(Files(), ElementsAre("state"));
}

TEST_F(SettingsStore, AKilledWriterLeavesTheOldOrTheNewValue)
{
    // Long enough that a write in place would be seen half done.
    const std::string values[] = {std::string(4000, 'a'), std::string(4000, 'b')};
    ASSERT_TRUE(desktop::WriteSetting(kKey, values[0]));
    for (int round = 0; round < 200; ++round) {
        fixtures::Process writer([&values] {
            for (int i = 0;; ++i) {
                static_cast<void>(desktop::WriteSetting(kKey, values[i % 2])); // killed in between
            }
        });
        usleep(static_cast<useconds_t>(200 + 37 * (round % 100)));
        writer.Signal(SIGKILL);
        writer.Wait();
        const auto found = desktop::ReadSetting(kKey);
        ASSERT_TRUE(found) << found.Error().text;
        ASSERT_TRUE(*found == values[0] || *found == values[1]);
    }
    EXPECT_EQ(vconf_set_int(kKey, 1), 0);
    EXPECT_THAT(Files(), ElementsAre("state"));
}

TEST_F(SettingsStore, WritersAndReadersInSeveralProcessesNeverMeetATornValue)
{
    const std::string values[] = {"1", std::string(3000, '2')};
    ASSERT_TRUE(desktop::WriteSetting(kKey, values[0]));
    std::vector<fixtures::Process> writers;
    for (const std::string& value : values) {
        writers.emplace_back([&value] {
            for (int i = 0; i < 300; ++i) {
                if (!desktop::WriteSetting(kKey, value)) {
                    _exit(1);
                }
            }
        });
    }
    for (int i = 0; i < 20'000; ++i) {
        const auto found = desktop::ReadSetting(kKey);
        ASSERT_TRUE(found) << found.Error().text;
        ASSERT_TRUE(*found == values[0] || *found == values[1]);
    }
    for (fixtures::Process& writer : writers) {
        EXPECT_EQ(writer.Wait(), 0);
    }
    EXPECT_THAT(Files(), ElementsAre("state"));
}
