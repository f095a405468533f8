#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "Tools/Terminal/ProgressBar.h"

namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::IsEmpty;

class ProgressBarTest : public testing::Test {
protected:
    std::string Line(std::size_t columns, std::size_t done, std::size_t total)
    {
        ProgressBar bar([this](const std::string& text) { written_.push_back(text); }, columns,
                        [this] { return now_; });
        now_ += milliseconds(1000);
        bar.Show(done, total, "files");
        return written_.back();
    }

    ProgressBar::Clock::time_point now_{};
    std::vector<std::string> written_;
};

TEST_F(ProgressBarTest, QuickWorkShowsNothing)
{
    {
        ProgressBar bar([this](const std::string& text) { written_.push_back(text); }, 80, [this] { return now_; });
        bar.Show(1, 3, "files");
        now_ += milliseconds(999);
        bar.Show(3, 3, "files");
    }
    EXPECT_THAT(written_, IsEmpty());
}

TEST_F(ProgressBarTest, SlowWorkIsDrawnTenTimesASecondAndErasedAtTheEnd)
{
    {
        ProgressBar bar([this](const std::string& text) { written_.push_back(text); }, 80, [this] { return now_; });
        now_ += milliseconds(1000);
        bar.Show(1, 4, "files");
        now_ += milliseconds(99);
        bar.Show(2, 4, "files");
        now_ += milliseconds(1);
        bar.Show(4, 4, "files");
    }
    EXPECT_THAT(written_,
                ElementsAre("\r[" + std::string(10, '#') + std::string(30, '.') + "] 1 of 4 files",
                            "\r[" + std::string(40, '#') + "] 4 of 4 files", "\r" + std::string(55, ' '), "\r"));
}

TEST_F(ProgressBarTest, ANarrowTerminalGetsOneLineThatIsNotFull)
{
    EXPECT_EQ(Line(24, 1, 2), "\r[####....] 1 of 2 files");
    EXPECT_EQ(Line(17, 1, 2), "\r 1 of 2 files");
    EXPECT_EQ(Line(5, 1, 2), "\r 1 o");
    EXPECT_EQ(Line(1, 1, 2), "\r");
}

TEST_F(ProgressBarTest, TheBarKeepsItsWidthWhileTheNumberGrows)
{
    EXPECT_EQ(Line(30, 9, 100), "\r[..........]   9 of 100 files");
    EXPECT_EQ(Line(30, 99, 100), "\r[#########.]  99 of 100 files");
}

TEST_F(ProgressBarTest, NumbersDoNotOverflow)
{
    EXPECT_EQ(Line(80, 4000000000U, 4100000000U), "\r[" + std::string(39, '#') + ".] 4000000000 of 4100000000 files");
}

TEST_F(ProgressBarTest, NothingToDoDrawsNothing)
{
    ProgressBar bar([this](const std::string& text) { written_.push_back(text); }, 80, [this] { return now_; });
    now_ += milliseconds(2000);
    bar.Show(0, 0, "files");
    EXPECT_THAT(written_, IsEmpty());
}

} // namespace
