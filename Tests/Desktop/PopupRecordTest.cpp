#include <gtest/gtest.h>
#include <string>

#include "Platform/desktop/bus/PopupRecord.h"
#include "Tests/Desktop/Fixtures.h"

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

TEST(PopupRecord, InvalidRecordsAreIgnored)
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
