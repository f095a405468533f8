#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include <gmock/gmock.h>

#include "Diagnostics/Status/Processes.h"

namespace {

using namespace status;
using namespace std::string_literals;
using testing::ElementsAre;

/// A list of processes as the kernel gives it.
class Proc : public testing::Test {
protected:
    Proc()
    {
        std::string name = testing::TempDir() + "procXXXXXX";
        root_ = mkdtemp(name.data());
    }
    ~Proc() override { std::filesystem::remove_all(root_); }

    void Add(const std::string& pid, const std::string& name, const std::string& state,
             const std::string& environment = "")
    {
        const std::filesystem::path folder = root_ / pid;
        std::filesystem::create_directory(folder);
        std::ofstream(folder / "comm") << name << "\n";
        std::ofstream(folder / "stat") << pid << " (" << name << ") " << state << " 1 1";
        std::ofstream(folder / "environ") << environment;
    }

    ApplicationProcesses Find() const { return FindApplicationProcesses(root_.string()); }

    std::filesystem::path root_;
};

TEST_F(Proc, OnlyLivingProcessesOfTheApplicationCount)
{
    Add("1", "init", "S");
    Add("30", "VQMKeygrab", "S", "A=1\0DISPLAY=:1\0XAUTHORITY=/a\0"s);
    Add("4", "VQMKeygrab", "T", "XDISPLAY=:2\0DISPLAY=\0"s);
    Add("5", "VQMKeygrab", "Z", "DISPLAY=:3\0"s);
    Add("6", "VQMKeygrabber", "S");
    Add("self", "VQMKeygrab", "S");
    std::filesystem::create_directory(root_ / "7");
    const ApplicationProcesses found = Find();
    EXPECT_TRUE(found.complete);
    ASSERT_EQ(found.processes.size(), 2U);
    EXPECT_EQ(found.processes[0].pid, 4);
    EXPECT_TRUE(found.processes[0].stopped);
    EXPECT_EQ(found.processes[0].display, "");
    EXPECT_EQ(found.processes[1].pid, 30);
    EXPECT_FALSE(found.processes[1].stopped);
    EXPECT_EQ(found.processes[1].display, ":1");
    EXPECT_EQ(found.processes[1].authority, "/a");
    EXPECT_THAT(DisplaysOf(found.processes), ElementsAre(":1"));
}

TEST_F(Proc, AListWithoutOtherUsersProcessesIsNotComplete)
{
    EXPECT_FALSE(Find().complete);
    EXPECT_FALSE(FindApplicationProcesses("/nowhere").complete);
}

TEST_F(Proc, ADisplayOfSeveralProcessesIsNamedOnce)
{
    Add("2", "VQMKeygrab", "S", "DISPLAY=:1");
    Add("3", "VQMKeygrab", "S", "DISPLAY=:1\0"s);
    Add("4", "VQMKeygrab", "S", "DISPLAY=:0\0"s);
    EXPECT_THAT(DisplaysOf(Find().processes), ElementsAre(":1", ":0"));
}

} // namespace
