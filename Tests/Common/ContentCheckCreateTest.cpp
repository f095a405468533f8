#include <functional>
#include <stdexcept>
#include <string>

#include "Common/VQMException.h"
#include "Tests/Common/ContentCheckFixture.h"

using recorder::Lines;

namespace {

TEST_F(ContentCheck, CreateRunsTheCheckOnlyOnce)
{
    EXPECT_TRUE(monitor_->Create()) << "no schedule: no exception";
    ExpectAnswers(false, false);
    EXPECT_NE(recorder::Take(), Lines());

    StoreSchedule(Xml({}, ""));
    EXPECT_TRUE(monitor_->Create());
    EXPECT_EQ(recorder::Take(), Lines()) << "nothing is looked at again";
    ExpectAnswers(false, false);
    monitor_->CheckContents();
    ExpectAnswers(true, true);
}

TEST_F(ContentCheck, CreateTriesAgainAfterAnException)
{
    OpenConstants::m_DataCache["ScheduleFile"] = std::string(300, 'n');
    EXPECT_FALSE(monitor_->Create());
    EXPECT_FALSE(monitor_->Create());
    OpenConstants::m_DataCache["ScheduleFile"] = "schedule.xml";
    StoreSchedule(Xml({}, ""));
    EXPECT_TRUE(monitor_->Create());
    ExpectAnswers(true, true);
}

TEST_F(ContentCheck, CreateLogsEachKindOfException)
{
    const struct {
        std::function<void()> raise;
        std::string message;
    } cases[] = {
        {[] { throw CVQMException(1, "own %s"); }, "Create : error own %s \n"},
        {[] { throw std::runtime_error("standard %s"); }, "Create : error standard %s \n"},
        {[] { throw 42; }, "Create : Unknown system error \n"},
    };
    for (const auto& test : cases) {
        StoreGood();
        // The log is the one foreign function on the way.
        recorder::SetListener([&](const std::string& line) {
            if (line == SchedulePathLine()) {
                test.raise();
            }
        });
        EXPECT_FALSE(monitor_->Create());
        recorder::SetListener(nullptr);
        EXPECT_EQ(recorder::Take(), (Lines{SchedulePathLine(), CreateError(test.message)}));
        ExpectAnswers(true, true);
        ExpectGoodPolicy();
    }
}

TEST_F(ContentCheck, AnExceptionWhileLoggingSettingsReleasesTheLock)
{
    StoreSchedule(Xml({}, kRechInfo));
    recorder::SetListener([](const std::string& line) {
        if (line == Line("CheckContents", kSeparator)) {
            throw std::runtime_error("no log");
        }
    });
    EXPECT_FALSE(monitor_->Create());
    recorder::SetListener(nullptr);
    EXPECT_EQ(Current().NumOfPlayer, 2);
}

} // namespace
