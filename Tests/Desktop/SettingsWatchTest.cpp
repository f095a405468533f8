#include <vconf.h>

#include <Ecore.h>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>
#include <vector>

#include "Platform/desktop/base/Settings.h"
#include "Tests/Desktop/Fixtures.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr char kKey[] = "db/menu/syncdemo/state";
constexpr char kNeighbour[] = "db/menu/syncdemo/other";

template <typename Condition>
bool LoopUntil(Condition condition)
{
    return Eventually(condition, [] {
        ecore_main_loop_iterate();
        ecore_main_loop_iterate_may_block(0);
        usleep(1000);
    });
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
        // Waits until the watch of this test's folder is deleted: its job was queued before this one.
        bool gone = false;
        ecore_job_add([](void* done) { *static_cast<bool*>(done) = true; }, &gone);
        EXPECT_TRUE(LoopUntil([&] { return gone; }));
    }

    /// Waits until all earlier changes have been delivered: the events of a folder arrive in order, and the
    /// change made here is the last one.
    void DeliverAllUntilNow()
    {
        constexpr char kMarker[] = "db/menu/syncdemo/marker";
        Seen markers;
        ASSERT_EQ(vconf_notify_key_changed(kMarker, Note, &markers), 0);
        ASSERT_EQ(vconf_set_int(kMarker, 1), 0);
        EXPECT_TRUE(LoopUntil([&] { return !markers.empty(); }));
        ASSERT_EQ(vconf_ignore_key_changed(kMarker, Note), 0);
    }

    fixtures::TemporaryFolder folder_;
    fixtures::Variable configuration_{"XDG_CONFIG_HOME", folder_.Path()};
    Seen seen_;
};

} // namespace

TEST_F(SettingsWatch, SeesEachWriteOnce)
{
    ASSERT_EQ(vconf_notify_key_changed(kKey, Note, &seen_), 0);
    for (const int value : {1, 0, 0, 1}) {
        const std::size_t before = seen_.size();
        EXPECT_EQ(vconf_set_int(kKey, value), 0);
        EXPECT_TRUE(LoopUntil([&] { return seen_.size() > before; }));
    }
    DeliverAllUntilNow();
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
    DeliverAllUntilNow();
    EXPECT_THAT(seen_, ElementsAre(1));
}

TEST_F(SettingsWatch, AnExistingValueIsNotAChange)
{
    EXPECT_EQ(vconf_set_int(kKey, 1), 0);
    ASSERT_EQ(vconf_notify_key_changed(kKey, Note, &seen_), 0);
    DeliverAllUntilNow();
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

TEST_F(SettingsWatch, KeysOfOneFolderAreDistinguished)
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
    DeliverAllUntilNow();
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
    DeliverAllUntilNow();
    EXPECT_THAT(seen_, ElementsAre(1, 1, 2));
}

TEST_F(SettingsWatch, ARegistrationAfterTheLastOneEndedWorks)
{
    ASSERT_EQ(vconf_notify_key_changed(kKey, Note, &seen_), 0);
    EXPECT_EQ(vconf_ignore_key_changed(kKey, Note), 0);
    EXPECT_EQ(vconf_set_int(kKey, 1), 0);
    ASSERT_EQ(vconf_notify_key_changed(kKey, Note, &seen_), 0);
    DeliverAllUntilNow();
    EXPECT_THAT(seen_, IsEmpty());
    EXPECT_EQ(vconf_set_int(kKey, 2), 0);
    EXPECT_TRUE(LoopUntil([&] { return seen_ == Seen{2}; }));
}

TEST_F(SettingsWatch, TheNodeHoldsKeyAndNumber)
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
    DeliverAllUntilNow();
    EXPECT_THAT(seen_, ElementsAre(1)); // the added one waits for the next change
    EXPECT_EQ(vconf_set_int(kKey, 2), 0);
    EXPECT_TRUE(LoopUntil([&] { return seen_ == Seen{1, 2}; }));
}

TEST_F(SettingsWatch, ARemovedCallbackIsNotRunForTheSameChange)
{
    ASSERT_EQ(vconf_notify_key_changed(kKey, RemoveNote, nullptr), 0);
    ASSERT_EQ(vconf_notify_key_changed(kKey, Note, &seen_), 0);
    EXPECT_EQ(vconf_set_int(kKey, 1), 0);
    DeliverAllUntilNow();
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
    EXPECT_EQ(vconf_set_int(kKey, 2), 0);
    EXPECT_TRUE(LoopUntil([&] { return seen_ == Seen{1, 0, 2}; }));
}

TEST_F(SettingsWatch, MakesNoFolders)
{
    ASSERT_EQ(vconf_notify_key_changed(kKey, Note, &seen_), 0);
    EXPECT_FALSE(fixtures::Exists(folder_ / "tvsettings"));
    EXPECT_EQ(vconf_set_int(kKey, 1), 0);
    EXPECT_TRUE(LoopUntil([&] { return seen_ == Seen{1}; }));
}

namespace {

/// One way to put another store, which holds 2, in the place of one that holds 1.
struct Replacement {
    const char* name;
    /// Below the folder of configurations: what stands there first, and the link that leads to it.
    std::function<void(const std::string& home)> replace;
    bool linked = false;
};

void PrintTo(const Replacement& replacement, std::ostream* out)
{
    *out << replacement.name;
}

class ReplacedPath : public testing::TestWithParam<Replacement> {
protected:
    static void Store(const std::string& folder, int value)
    {
        fixtures::WriteFile(folder + "/" + kKey, std::to_string(value));
    }

    fixtures::TemporaryFolder folder_;
};

void MakeOther(const std::string& folder)
{
    fixtures::WriteFile(folder + "/" + kKey, "2");
}

} // namespace

TEST_P(ReplacedPath, IsFollowed)
{
    const std::string home = folder_ / "home";
    const fixtures::Variable configuration("XDG_CONFIG_HOME", home + "/config");
    if (GetParam().linked) {
        Store(home + "/first", 1);
        std::filesystem::create_directories(home + "/config");
        std::filesystem::create_directory_symlink("../first", home + "/config/tvsettings");
    } else {
        Store(home + "/config/tvsettings", 1);
    }
    Seen seen;
    ASSERT_EQ(vconf_notify_key_changed(kKey, Note, &seen), 0);
    GetParam().replace(home);
    EXPECT_TRUE(LoopUntil([&] { return !seen.empty() && seen.back() == 2; }));
    EXPECT_EQ(vconf_set_int(kKey, 3), 0);
    EXPECT_TRUE(LoopUntil([&] { return seen.back() == 3; }));
    EXPECT_EQ(vconf_ignore_key_changed(kKey, Note), 0);
}

INSTANTIATE_TEST_SUITE_P(
    SettingsWatch, ReplacedPath,
    testing::Values(Replacement{"KeysFolderRenamed",
                                [](const std::string& home) {
                                    const std::string folder = home + "/config/tvsettings/db/menu/syncdemo";
                                    std::filesystem::rename(folder, folder + "-old");
                                    MakeOther(home + "/config/tvsettings");
                                }},
                    Replacement{"StoreRenamed",
                                [](const std::string& home) {
                                    std::filesystem::rename(home + "/config/tvsettings", home + "/old");
                                    MakeOther(home + "/config/tvsettings");
                                }},
                    Replacement{"ParentRenamed",
                                [](const std::string& home) {
                                    std::filesystem::rename(home + "/config", home + "/old");
                                    MakeOther(home + "/new/tvsettings");
                                    std::filesystem::rename(home + "/new", home + "/config");
                                }},
                    Replacement{"HomeRenamed",
                                [](const std::string& home) {
                                    std::filesystem::rename(home, home + "-old");
                                    MakeOther(home + "/config/tvsettings");
                                }},
                    Replacement{"AllRemoved",
                                [](const std::string& home) {
                                    std::filesystem::remove_all(home);
                                    MakeOther(home + "/config/tvsettings");
                                }},
                    Replacement{"RemovedWhileOpen",
                                [](const std::string& home) {
                                    const int held = open((home + "/config/tvsettings/db/menu/syncdemo").c_str(),
                                                          O_RDONLY | O_DIRECTORY | O_CLOEXEC);
                                    std::filesystem::remove_all(home + "/config/tvsettings");
                                    MakeOther(home + "/config/tvsettings");
                                    EXPECT_GE(held, 0); // and stays open
                                }},
                    Replacement{"LinkPointedElsewhere",
                                [](const std::string& home) {
                                    MakeOther(home + "/second");
                                    std::filesystem::remove(home + "/config/tvsettings");
                                    std::filesystem::create_directory_symlink("../second", home + "/config/tvsettings");
                                },
                                true},
                    Replacement{"LinkReplacedAtOnce",
                                [](const std::string& home) {
                                    MakeOther(home + "/second");
                                    std::filesystem::create_directory_symlink("../second", home + "/link");
                                    std::filesystem::rename(home + "/link", home + "/config/tvsettings");
                                },
                                true},
                    Replacement{"LinksTargetRenamed",
                                [](const std::string& home) {
                                    std::filesystem::rename(home + "/first", home + "/old");
                                    MakeOther(home + "/first");
                                },
                                true}),
    [](const auto& test) { return std::string(test.param.name); });

TEST_F(SettingsWatch, SeesAWriterThatKeepsItsFileOpen)
{
    EXPECT_EQ(vconf_set_int(kKey, 0), 0);
    ASSERT_EQ(vconf_notify_key_changed(kKey, Note, &seen_), 0);
    const int writer = open(File().c_str(), O_WRONLY | O_CLOEXEC);
    ASSERT_EQ(pwrite(writer, "1", 1, 0), 1);
    EXPECT_TRUE(LoopUntil([&] { return seen_ == Seen{1}; }));
    ASSERT_EQ(pwrite(writer, "2", 1, 0), 1);
    EXPECT_TRUE(LoopUntil([&] { return seen_ == Seen{1, 2}; }));
    close(writer);
}

TEST_F(SettingsWatch, SeesAFileThatIsLinkedIntoPlace)
{
    std::filesystem::create_directories(File("db/menu/syncdemo"));
    ASSERT_EQ(vconf_notify_key_changed(kKey, Note, &seen_), 0);
    const std::string prepared = folder_ / "prepared";
    fixtures::WriteFile(prepared, "1");
    std::filesystem::create_hard_link(prepared, File());
    EXPECT_TRUE(LoopUntil([&] { return seen_ == Seen{1}; }));
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
    EXPECT_THAT(desktop::LastSettingsError(), testing::HasSubstr("tvsettings/db/menu"));
}
