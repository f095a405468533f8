#include <string>

#include <boost/filesystem/operations.hpp>

#include "Tests/Common/ContentCheckFixture.h"
#include "Tests/Support/WithoutOverride.h"

using recorder::Lines;
namespace fs = std::filesystem;

namespace {

/// The paths that cannot be examined, and what makes them so.

class ContentCheckUnexaminable : public ContentCheck {
protected:
    void ExpectFailure(const std::string& path)
    {
        std::string reason;
        try {
            boost::filesystem::exists(path);
        } catch (const boost::filesystem::filesystem_error& error) {
            reason = error.what();
        }
        ASSERT_NE(reason, "");
        EXPECT_THROW(monitor_->CheckContents(), boost::filesystem::filesystem_error);
        EXPECT_EQ(TaggedLines(), Lines{SchedulePathLine()});
        EXPECT_FALSE(monitor_->Create());
        EXPECT_EQ(TaggedLines(), (Lines{SchedulePathLine(), CreateError("Create : error " + reason + " \n")}));
        ExpectAnswers(true, true);
        ExpectGoodPolicy();
    }
};

TEST_F(ContentCheckUnexaminable, ALoopOfLinks)
{
    StoreGood();
    fs::remove(kScheduleDirectory + "schedule.xml");
    fs::create_symlink("other.xml", kScheduleDirectory + "schedule.xml");
    fs::create_symlink("schedule.xml", kScheduleDirectory + "other.xml");
    ExpectFailure(kScheduleDirectory + "schedule.xml");
}

TEST_F(ContentCheckUnexaminable, ANameThatIsTooLong)
{
    StoreGood();
    const std::string name(300, 'n');
    OpenConstants::m_DataCache["ScheduleFile"] = name;
    ExpectFailure(kScheduleDirectory + name);
}

TEST_F(ContentCheckUnexaminable, ADirectoryWithoutPermission)
{
    StoreGood();
    fs::permissions(kScheduleDirectory, fs::perms::none);
    const WithoutOverride plainUser;
    ExpectFailure(kScheduleDirectory + "schedule.xml");
}

TEST_F(ContentCheck, AFileWithoutPermissionExistsButDoesNotOpen)
{
    StoreGood();
    const std::string path = kScheduleDirectory + "schedule.xml";
    fs::permissions(path, fs::perms::none);
    {
        const WithoutOverride plainUser;
        monitor_->CheckContents();
    }
    EXPECT_EQ(
        TaggedLines(),
        (Lines{SchedulePathLine(), PipeLine("FOpen", "CVQMFilePipe::FOpen\n"),
               PipeLine("FOpen", "CVQMFilePipe::FOpen - RequestCommand is Read\n"),
               PipeLine("CreatePipe", "CVQMFilePipe::CreatePipe - error ifstream open Error : " + path + " \n")}));
    ExpectAnswers(false, true);
    ExpectGoodPolicy();
}

TEST_F(ContentCheck, ALinkToNowhereIsAbsent)
{
    fs::create_symlink("nowhere", kScheduleDirectory + "schedule.xml");
    monitor_->CheckContents();
    EXPECT_EQ(TaggedLines().size(), 2U);
    ExpectAnswers(false, false);
}

} // namespace
