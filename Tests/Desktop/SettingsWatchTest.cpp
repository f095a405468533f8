#include <vconf.h>

#include <Ecore.h>
#include <filesystem>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>
#include <vector>

#include "Platform/desktop/base/SettingsStore.h"
#include "Tests/Desktop/Fixtures.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr char kKey[] = "db/menu/syncdemo/state";
constexpr char kNeighbour[] = "db/menu/syncdemo/other";

/// Runs the main loop until the condition holds; false after five seconds.
bool LoopUntil(const std::function<bool()>& condition)
{
    const double end = fixtures::Seconds() + 5;
    while (!condition()) {
        if (fixtures::Seconds() > end) {
            return false;
        }
        ecore_main_loop_iterate();
        ecore_main_loop_iterate_may_block(0);
        usleep(1000);
    }
    return true;
}

void LoopFor(double seconds)
{
    const double end = fixtures::Seconds() + seconds;
    LoopUntil([end] { return fixtures::Seconds() >= end; });
}

using Seen = std::vector<int>;

void Note(keynode_t* node, void* seen)
{
    static_cast<Seen*>(seen)->push_back(vconf_keynode_get_int(node));
}

class SettingsWatch : public testing::Test {
protected:
    std::string File(const std::string& key = kKey) const { return folder_ / "tvsettings/" + key; }

    void TearDown() override
    {
        while (vconf_ignore_key_changed(kKey, Note) == 0 || vconf_ignore_key_changed(kNeighbour, Note) == 0) {
        }
        LoopFor(0.01); // lets the watch of this test's folder go
    }

    fixtures::TemporaryFolder folder_;
    fixtures::Variable configuration_{"XDG_CONFIG_HOME", folder_.Path()};
    Seen seen_;
};

} // namespace

TEST_F(SettingsWatch, SeesEachSetOnce)
{
    ASSERT_EQ(vconf_notify_key_changed(kKey, Note, &seen_), 0);
    for (const int value : {1, 0, 0, 1}) {
        const std::size_t before = seen_.size();
        EXPECT_EQ(vconf_set_int(kKey, value), 0);
        EXPECT_TRUE(LoopUntil([&] { return seen_.size() > before; }));
    }
    LoopFor(0.1);
    EXPECT_THAT(seen_, ElementsAre(1, 0, 0, 1));
}

TEST_F(SettingsWatch, SeesWhatOtherProcessesDo)
{
    ASSERT_EQ(vconf_notify_key_changed(kKey, Note, &seen_), 0);
    fixtures::Process writer([] { vconf_set_int(kKey, 7); });
    EXPECT_TRUE(LoopUntil([&] { return seen_ == Seen{7}; }));
    fixtures::Process remover([this] { std::filesystem::remove(File()); });
    EXPECT_TRUE(LoopUntil([&] { return seen_ == Seen{7, 0}; }));
}

TEST_F(SettingsWatch, SeesAnEditInPlaceOnce)
{
    EXPECT_EQ(vconf_set_int(kKey, 0), 0);
    ASSERT_EQ(vconf_notify_key_changed(kKey, Note, &seen_), 0);
    fixtures::WriteFile(File(), "1\n");
    EXPECT_TRUE(LoopUntil([&] { return !seen_.empty(); }));
    LoopFor(0.1);
    EXPECT_THAT(seen_, ElementsAre(1));
}

TEST_F(SettingsWatch, WhatStoodThereBeforeIsNoChange)
{
    EXPECT_EQ(vconf_set_int(kKey, 1), 0);
    ASSERT_EQ(vconf_notify_key_changed(kKey, Note, &seen_), 0);
    LoopFor(0.1);
    EXPECT_THAT(seen_, IsEmpty());
}

TEST_F(SettingsWatch, SeesTheLastOfManyWritesByTwoProcesses)
{
    ASSERT_EQ(vconf_notify_key_changed(kKey, Note, &seen_), 0);
    {
        const auto rewrite = [](int base) {
            return [base] {
                for (int i = 1; i <= 300; ++i) {
                    vconf_set_int(kKey, base + i);
                }
            };
        };
        fixtures::Process one(rewrite(1000));
        fixtures::Process two(rewrite(2000));
        EXPECT_TRUE(LoopUntil([&] { return seen_.size() > 10; }));
        EXPECT_EQ(one.Wait(), 0);
        EXPECT_EQ(two.Wait(), 0);
    }
    int last = 0;
    ASSERT_EQ(vconf_get_int(kKey, &last), 0);
    EXPECT_TRUE(LoopUntil([&] { return seen_.back() == last; }));
    for (const int value : seen_) {
        EXPECT_TRUE((value > 1000 && value <= 1300) || (value > 2000 && value <= 2300)) << value;
    }
}

TEST_F(SettingsWatch, KeysOfOneFolderAreToldApart)
{
    Seen other;
    ASSERT_EQ(vconf_notify_key_changed(kKey, Note, &seen_), 0);
    ASSERT_EQ(vconf_notify_key_changed(kNeighbour, Note, &other), 0);
    EXPECT_EQ(vconf_set_int(kNeighbour, 5), 0);
    EXPECT_TRUE(LoopUntil([&] { return !other.empty(); }));
    EXPECT_EQ(vconf_set_int(kKey, 6), 0);
    EXPECT_TRUE(LoopUntil([&] { return !seen_.empty(); }));
    // One going leaves the other one watched.
    EXPECT_EQ(vconf_ignore_key_changed(kNeighbour, Note), 0);
    LoopFor(0.05);
    EXPECT_EQ(vconf_set_int(kNeighbour, 7), 0);
    EXPECT_EQ(vconf_set_int(kKey, 8), 0);
    EXPECT_TRUE(LoopUntil([&] { return seen_.size() == 2; }));
    EXPECT_THAT(seen_, ElementsAre(6, 8));
    EXPECT_THAT(other, ElementsAre(5));
}

TEST_F(SettingsWatch, TwoRegistrationsOfOneCallbackAreTwo)
{
    ASSERT_EQ(vconf_notify_key_changed(kKey, Note, &seen_), 0);
    ASSERT_EQ(vconf_notify_key_changed(kKey, Note, &seen_), 0);
    EXPECT_EQ(vconf_set_int(kKey, 1), 0);
    EXPECT_TRUE(LoopUntil([&] { return seen_ == Seen{1, 1}; }));
    EXPECT_EQ(vconf_ignore_key_changed(kKey, Note), 0);
    EXPECT_EQ(vconf_set_int(kKey, 2), 0);
    EXPECT_TRUE(LoopUntil([&] { return seen_ == Seen{1, 1, 2}; }));
    EXPECT_EQ(vconf_ignore_key_changed(kKey, Note), 0);
    EXPECT_EQ(vconf_ignore_key_changed(kKey, Note), -1);
    EXPECT_EQ(vconf_set_int(kKey, 3), 0);
    LoopFor(0.1);
    EXPECT_THAT(seen_, ElementsAre(1, 1, 2));
}

TEST_F(SettingsWatch, ARegistrationAfterTheLastOneEndedWorks)
{
    ASSERT_EQ(vconf_notify_key_changed(kKey, Note, &seen_), 0);
    EXPECT_EQ(vconf_ignore_key_changed(kKey, Note), 0);
    EXPECT_EQ(vconf_set_int(kKey, 1), 0);
    ASSERT_EQ(vconf_notify_key_changed(kKey, Note, &seen_), 0);
    LoopFor(0.05);
    EXPECT_THAT(seen_, IsEmpty());
    EXPECT_EQ(vconf_set_int(kKey, 2), 0);
    EXPECT_TRUE(LoopUntil([&] { return seen_ == Seen{2}; }));
}

TEST_F(SettingsWatch, TheNodeTellsKeyAndNumber)
{
    struct What {
        std::string name;
        int number = -1;
    } what;
    const vconf_callback_fn callback = [](keynode_t* node, void* data) {
        *static_cast<What*>(data) = {vconf_keynode_get_name(node), vconf_keynode_get_int(node)};
    };
    ASSERT_EQ(vconf_notify_key_changed(kKey, callback, &what), 0);
    EXPECT_EQ(vconf_set_int(kKey, 9), 0);
    EXPECT_TRUE(LoopUntil([&] { return what.number == 9; }));
    EXPECT_EQ(what.name, kKey);
    EXPECT_EQ(vconf_set_str(kKey, "text"), 0);
    EXPECT_TRUE(LoopUntil([&] { return what.number == 0; }));
    EXPECT_EQ(vconf_ignore_key_changed(kKey, callback), 0);
    EXPECT_EQ(vconf_keynode_get_name(nullptr), nullptr);
    EXPECT_EQ(vconf_keynode_get_int(nullptr), 0);
}

namespace {

void RemoveMyselfAndAddNote(keynode_t* node, void* seen)
{
    Note(node, seen);
    EXPECT_EQ(vconf_ignore_key_changed(kKey, RemoveMyselfAndAddNote), 0);
    EXPECT_EQ(vconf_notify_key_changed(kKey, Note, seen), 0);
}

void RemoveNote(keynode_t* /*node*/, void* /*data*/)
{
    vconf_ignore_key_changed(kKey, Note);
}

} // namespace

TEST_F(SettingsWatch, ACallbackMayRemoveItselfAndAddAnother)
{
    ASSERT_EQ(vconf_notify_key_changed(kKey, RemoveMyselfAndAddNote, &seen_), 0);
    EXPECT_EQ(vconf_set_int(kKey, 1), 0);
    EXPECT_TRUE(LoopUntil([&] { return !seen_.empty(); }));
    LoopFor(0.05);
    EXPECT_THAT(seen_, ElementsAre(1)); // the added one waits for the next change
    EXPECT_EQ(vconf_set_int(kKey, 2), 0);
    EXPECT_TRUE(LoopUntil([&] { return seen_ == Seen{1, 2}; }));
}

TEST_F(SettingsWatch, ARemovedCallbackIsNotRunForTheSameChange)
{
    ASSERT_EQ(vconf_notify_key_changed(kKey, RemoveNote, nullptr), 0);
    ASSERT_EQ(vconf_notify_key_changed(kKey, Note, &seen_), 0);
    EXPECT_EQ(vconf_set_int(kKey, 1), 0);
    LoopFor(0.1);
    EXPECT_THAT(seen_, IsEmpty());
    EXPECT_EQ(vconf_ignore_key_changed(kKey, RemoveNote), 0);
}

TEST_F(SettingsWatch, SurvivesTheFoldersRemoval)
{
    ASSERT_EQ(vconf_notify_key_changed(kKey, Note, &seen_), 0);
    EXPECT_EQ(vconf_set_int(kKey, 1), 0);
    EXPECT_TRUE(LoopUntil([&] { return seen_ == Seen{1}; }));
    std::filesystem::remove_all(folder_ / "tvsettings");
    EXPECT_TRUE(LoopUntil([&] { return seen_ == Seen{1, 0}; }));
    EXPECT_TRUE(LoopUntil([&] { return fixtures::Exists(folder_ / "tvsettings/db/menu/syncdemo"); }));
    EXPECT_EQ(vconf_set_int(kKey, 2), 0);
    EXPECT_TRUE(LoopUntil([&] { return seen_ == Seen{1, 0, 2}; }));
}

TEST_F(SettingsWatch, RefusesWhatCannotBeWatched)
{
    EXPECT_EQ(vconf_notify_key_changed(kKey, nullptr, nullptr), -1);
    EXPECT_EQ(vconf_notify_key_changed(nullptr, Note, nullptr), -1);
    EXPECT_EQ(vconf_notify_key_changed("../x", Note, nullptr), -1);
    EXPECT_EQ(vconf_ignore_key_changed(kKey, Note), -1);
    EXPECT_EQ(vconf_ignore_key_changed(nullptr, Note), -1);
    fixtures::WriteFile(folder_ / "tvsettings/db", "a file where a folder must be");
    EXPECT_EQ(vconf_notify_key_changed(kKey, Note, nullptr), -1);
    EXPECT_THAT(desktop::LastSettingsProblem(), testing::HasSubstr("tvsettings/db/menu"));
}
