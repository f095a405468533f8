#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Diagnostics/Edit/EditableFile.h"

namespace {

using Use = EditableFile::Use;

class EditableFileTest : public testing::Test {
protected:
    void SetUp() override
    {
        std::string name = testing::TempDir() + "edit-XXXXXX";
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        folder_ = name;
        Write("old");
    }
    void TearDown() override { std::filesystem::remove_all(folder_); }

    std::string Path(const std::string& name = "a.xml") const { return folder_ + "/" + name; }

    void Write(const std::string& content, const std::string& name = "a.xml") const
    {
        std::ofstream(Path(name), std::ios::binary) << content;
    }

    std::string Read(const std::string& name = "a.xml") const
    {
        std::ifstream file(Path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    std::vector<std::string> Names() const
    {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder_)) {
            names.push_back(entry.path().filename());
        }
        return names;
    }

    /// What is said about opening or replacing the file; empty when it went well.
    template <typename Action>
    static std::string Refusal(Action action)
    {
        try {
            action();
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "";
    }

    std::string RefusalToOpen(const std::string& name) const
    {
        return Refusal([&] { const EditableFile file(Path(name), Use::kReplace); });
    }

    std::string folder_;
};

TEST_F(EditableFileTest, ReplacesTheContentAndLeavesNothingElseBehind)
{
    const EditableFile file(Path(), Use::kReplace);
    EXPECT_EQ(file.Content(), "old");
    file.Replace("new");
    EXPECT_EQ(Read(), "new");
    EXPECT_EQ(Names(), std::vector<std::string>{"a.xml"});
}

TEST_F(EditableFileTest, KeepsModeAndOwner)
{
    ASSERT_EQ(chmod(Path().c_str(), 0640), 0);
    if (geteuid() == 0) {
        ASSERT_EQ(chown(Path().c_str(), 1234, 4321), 0);
    }
    struct stat before = {};
    ASSERT_EQ(stat(Path().c_str(), &before), 0);
    EditableFile(Path(), Use::kReplace).Replace("new");
    struct stat after = {};
    ASSERT_EQ(stat(Path().c_str(), &after), 0);
    EXPECT_EQ(after.st_mode, before.st_mode);
    EXPECT_EQ(after.st_uid, before.st_uid);
    EXPECT_EQ(after.st_gid, before.st_gid);
}

TEST_F(EditableFileTest, FindsAPlainNameInTheWorkingDirectory)
{
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(folder_);
    Write("half", ".vqmctl-new-abcdef");
    EditableFile("a.xml", Use::kReplace).Replace("new");
    std::filesystem::current_path(before);
    EXPECT_EQ(Read(), "new");
    EXPECT_EQ(Names(), std::vector<std::string>{"a.xml"});
}

TEST_F(EditableFileTest, RefusesToReplaceWhatIsNotOneRegularFileOfItsOwn)
{
    std::filesystem::create_symlink("a.xml", Path("link"));
    std::filesystem::create_symlink("none", Path("dangling"));
    std::filesystem::create_directory(Path("folder"));
    ASSERT_EQ(mkfifo(Path("pipe").c_str(), 0600), 0);
    const auto expected = [this](const std::string& name, const std::string& why) {
        return "cannot change '" + Path(name) + "': " + why;
    };
    EXPECT_EQ(RefusalToOpen("link"), expected("link", "it is a link; name the file that it leads to"));
    EXPECT_EQ(RefusalToOpen("dangling"), expected("dangling", "it is a link; name the file that it leads to"));
    EXPECT_EQ(RefusalToOpen("folder"), expected("folder", "it is not a regular file"));
    EXPECT_EQ(RefusalToOpen("pipe"), expected("pipe", "it is not a regular file"));
    EXPECT_EQ(RefusalToOpen("none"), "cannot read '" + Path("none") + "': No such file or directory");
    std::filesystem::create_hard_link(Path(), Path("other"));
    EXPECT_EQ(RefusalToOpen("a.xml"),
              expected("a.xml", "it has 2 names (hard links), and the others would keep the old content"));
    EXPECT_EQ(Refusal([] { const EditableFile file("-", Use::kReplace); }),
              "cannot change '<stdin>': a file is expected");
}

TEST_F(EditableFileTest, ReadsALinkThatItNeedNotReplace)
{
    std::filesystem::create_symlink("a.xml", Path("link"));
    EXPECT_EQ(EditableFile(Path("link"), Use::kRead).Content(), "old");
}

TEST_F(EditableFileTest, RefusesAFileWithoutAnEnd)
{
    EXPECT_EQ(Refusal([] { const EditableFile file("/dev/zero", Use::kRead); }),
              "cannot read '/dev/zero': more than 67108864 bytes; expected a schedule document");
}

TEST_F(EditableFileTest, LeavesAloneWhatChangedMeanwhile)
{
    const std::string changed = "it has changed since it was read; try again";
    const struct {
        const char* what;
        std::function<void()> change;
        std::string kept;
        std::string why;
    } cases[] = {
        {"written in place, as long as before", [this] { Write("odd"); }, "odd", changed},
        {"replaced by a file with the same content",
         [this] {
             Write("old", "b.xml");
             std::filesystem::rename(Path("b.xml"), Path());
         },
         "old", changed},
        {"another mode", [this] { chmod(Path().c_str(), 0400); }, "old", changed},
        {"a link in its place",
         [this] {
             std::filesystem::rename(Path(), Path("b.xml"));
             std::filesystem::create_symlink("b.xml", Path());
         },
         "old", changed},
        {"removed", [this] { std::filesystem::remove(Path()); }, "", "No such file or directory"},
    };
    for (const auto& test : cases) {
        std::filesystem::remove(Path());
        Write("old");
        const EditableFile file(Path(), Use::kReplace);
        test.change();
        EXPECT_EQ(Refusal([&file] { file.Replace("new"); }), "cannot change '" + Path() + "': " + test.why)
            << test.what;
        EXPECT_EQ(Read(), test.kept) << test.what;
        for (const std::string& name : Names()) {
            EXPECT_NE(name.rfind(".vqmctl-new-", 0), 0U) << test.what;
        }
    }
}

TEST_F(EditableFileTest, RemovesWhatAKilledProcessLeftBehind)
{
    Write("half", ".vqmctl-new-abcdef");
    EditableFile(Path(), Use::kReplace).Replace("new");
    EXPECT_EQ(Names(), std::vector<std::string>{"a.xml"});
}

} // namespace
