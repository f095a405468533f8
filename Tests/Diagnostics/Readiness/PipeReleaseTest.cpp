#include "Diagnostics/Readiness/PipeRelease.h"

#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace {

class PipeRelease : public testing::Test {
protected:
    PipeRelease()
    {
        std::string folder = testing::TempDir() + "pipe-release-XXXXXX";
        folder_ = mkdtemp(folder.data());
        path_ = folder_ / "document";
    }
    ~PipeRelease() override { std::filesystem::remove_all(folder_); }

    std::filesystem::path folder_;
    std::filesystem::path path_;
};

/// Without it this waits for ever.
TEST_F(PipeRelease, APipeThatIsWaitedForReadsAsEmpty)
{
    ASSERT_EQ(mkfifo(path_.c_str(), 0600), 0);
    const readiness::PipeRelease release(path_);
    std::ifstream pipe(path_);
    EXPECT_TRUE(pipe.is_open());
    EXPECT_EQ(pipe.get(), std::ifstream::traits_type::eof());
}

TEST_F(PipeRelease, APipeThatCameAfterwardsIsReleasedToo)
{
    std::ofstream(path_) << "text";
    const readiness::PipeRelease release(path_);
    ASSERT_EQ(unlink(path_.c_str()), 0);
    ASSERT_EQ(mkfifo(path_.c_str(), 0600), 0);
    EXPECT_TRUE(std::ifstream(path_).is_open());
}

TEST_F(PipeRelease, NothingThereIsNoFault)
{
    const readiness::PipeRelease release(path_);
    EXPECT_FALSE(std::filesystem::exists(path_));
}

} // namespace
