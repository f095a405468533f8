#include <algorithm>
#include <exception>
#include <functional>
#include <string>
#include <thread>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Common/VQMException.h"
#include "Tests/Common/ContentCheckFixture.h"
#include "Tests/Support/AllocationFault.h"
#include "Tests/Support/Descriptors.h"
#include "Tests/Support/ProcessLimits.h"
#include "Tests/Support/WithoutOverride.h"
#include "Tests/VQMSerialize/EmptyText.h"

// The content check on files that are not what they seem, or that change while it looks.

using recorder::Lines;
namespace fs = std::filesystem;

namespace {

const std::string kSchedule = kScheduleDirectory + "schedule.xml";

class ContentCheckFault : public ContentCheck {
protected:
    /// Expects that the check loses the schedule and changes nothing else.
    void ExpectNoSchedule(const std::string& lastLine)
    {
        monitor_->CheckContents();
        EXPECT_EQ(TaggedLines().back(), lastLine);
        ExpectAnswers(false, true);
        ExpectGoodPolicy();
    }

    /// Runs `change` once, right after the first line that is exactly `when`.
    static void OnLine(const std::string& when, const std::function<void()>& change)
    {
        recorder::SetListener([when, change, changed = false](const std::string& line) mutable {
            if (!changed && line == when) {
                changed = true;
                change();
            }
        });
    }

    static std::string NotExist(const std::string& name)
    {
        return Line("CheckContents",
                    "CVQMSyncDemoMonitor::CheckContents - " + kMediaDirectory + name + " not exist \n");
    }

    static std::string OpenError()
    {
        return PipeLine("CreatePipe", "CVQMFilePipe::CreatePipe - error ifstream open Error : " + kSchedule + " \n");
    }

    static std::string Refusal(const std::string& text) { return ParserLine(RefusalMessage(text)); }
};

TEST_F(ContentCheckFault, AScheduleWithoutASizeExistsAndDoesNotParse)
{
    for (const char* target : {"/dev/null", "/dev/zero", "/proc/self/status"}) {
        SCOPED_TRACE(target);
        StoreGood();
        fs::remove(kSchedule);
        fs::create_symlink(target, kSchedule);
        ExpectNoSchedule(Refusal(""));
        fs::remove(kSchedule);
    }
}

TEST_F(ContentCheckFault, AFifoAsScheduleIsEmptyOnceItHasAWriter)
{
    StoreGood();
    fs::remove(kSchedule);
    ASSERT_EQ(mkfifo(kSchedule.c_str(), 0600), 0);
    std::thread writer([] {
        const int fifo = open(kSchedule.c_str(), O_WRONLY);
        EXPECT_GE(fifo, 0);
        close(fifo);
    });
    ExpectNoSchedule(Refusal(""));
    writer.join();
}

TEST_F(ContentCheckFault, AScheduleThatVanishesBeforeItIsOpenedDoesNotOpen)
{
    StoreGood();
    OnLine(PipeLine("FOpen", "CVQMFilePipe::FOpen\n"), [] { fs::remove(kSchedule); });
    ExpectNoSchedule(OpenError());
}

TEST_F(ContentCheckFault, AScheduleThatIsReplacedOrRemovedWhileItIsReadIsReadAsItWas)
{
    const std::function<void()> changes[] = {[] { fs::remove(kSchedule); },
                                             [] {
                                                 std::ofstream(kSchedule + ".new") << "no xml";
                                                 fs::rename(kSchedule + ".new", kSchedule);
                                             },
                                             [] { std::ofstream(kSchedule, std::ios::app) << "<more>"; }};
    for (const auto& change : changes) {
        StoreGood();
        OnLine(SizeLine(kSchedule, fs::file_size(kSchedule)), change);
        monitor_->CheckContents();
        recorder::SetListener(nullptr);
        ExpectAnswers(true, true);
        ExpectGoodPolicy();
    }
}

TEST_F(ContentCheckFault, AScheduleThatIsCutShortWhileItIsReadDoesNotParse)
{
    for (const std::size_t size : {0U, 50U}) {
        StoreGood();
        OnLine(SizeLine(kSchedule, fs::file_size(kSchedule)), [size] { fs::resize_file(kSchedule, size); });
        ExpectNoSchedule(Refusal(std::string(size, 'x')));
        recorder::SetListener(nullptr);
    }
}

TEST_F(ContentCheckFault, WithoutDescriptorsTheScheduleIsThereAndDoesNotOpen)
{
    StoreGood();
    {
        const NoDescriptors none;
        ExpectNoSchedule(OpenError());
        EXPECT_TRUE(monitor_->Create()) << "no exception";
    }
    monitor_->CheckContents();
    ExpectAnswers(true, true);
}

/// In the units of this file system.
unsigned long long SizeOfAnEmptyDirectory()
{
    const std::string path = kMediaDirectory + "empty";
    struct stat status = {};
    EXPECT_EQ(mkdir(path.c_str(), 0700), 0);
    EXPECT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(rmdir(path.c_str()), 0);
    return static_cast<unsigned long long>(status.st_size);
}

/// A content counts by its size alone, no matter which kind of file it is.
TEST_F(ContentCheckFault, ContentsOfEveryKindCountByTheirSize)
{
    const std::string path = kMediaDirectory + "odd.mp4";
    const struct {
        const char* name;
        std::function<void()> make;
        unsigned long long size; ///< 0 as well for what cannot be examined
    } cases[] = {
        {"missing", [] {}, 0},
        {"empty", [] { StoreMedia("odd.mp4", 0); }, 0},
        {"file", [] { StoreMedia("odd.mp4", 9); }, 9},
        {"sparse file", [] { StoreMedia("odd.mp4", 5ULL << 30); }, 5ULL << 30},
        {"file without permission",
         [&] {
             StoreMedia("odd.mp4", 9);
             fs::permissions(path, fs::perms::none);
         },
         9},
        {"link",
         [&] {
             StoreMedia("target", 9);
             fs::create_symlink("target", path);
         },
         9},
        {"link to nowhere", [&] { fs::create_symlink("nowhere", path); }, 0},
        {"loop of links", [&] { fs::create_symlink("odd.mp4", path); }, 0},
        {"FIFO", [&] { ASSERT_EQ(mkfifo(path.c_str(), 0600), 0); }, 0},
        {"device", [&] { fs::create_symlink("/dev/zero", path); }, 0},
        {"kernel's file", [&] { fs::create_symlink("/proc/self/status", path); }, 0},
        {"empty directory", [&] { fs::create_directory(path); }, SizeOfAnEmptyDirectory()},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.name);
        test.make();
        const WithoutOverride plainUser;
        for (const bool right : {true, false}) {
            StoreSchedule(Xml({{{"odd", "mp4", test.size + (right ? 0 : 1)}}}, ""));
            monitor_->CheckContents();
            ExpectAnswers(true, right);
            const Lines lines = TaggedLines();
            EXPECT_EQ(std::count(lines.begin(), lines.end(), NotExist("odd.mp4")), right ? 0 : 1);
        }
        fs::remove(path);
    }
}

TEST_F(ContentCheckFault, ContentsInADirectoryWithoutPermissionAreMissing)
{
    StoreGood();
    fs::permissions(kMediaDirectory, fs::perms::none);
    {
        const WithoutOverride plainUser;
        monitor_->CheckContents();
    }
    fs::permissions(kMediaDirectory, fs::perms::owner_all);
    EXPECT_EQ(TaggedLines().back(), NotExist("intro.mp4"));
    ExpectAnswers(true, false);
    ExpectGoodPolicy();
}

TEST_F(ContentCheckFault, NamesThatNoFileCanHaveAreMissing)
{
    for (const std::string& name :
         {std::string(300, 'n'), std::string("intro.mp4/below"), std::string(5000, '/') + "x"}) {
        StoreGood();
        StoreSchedule(Xml({{{name, "mp4", 5}}}, ""));
        monitor_->CheckContents();
        EXPECT_EQ(TaggedLines().back(), NotExist(name + ".mp4"));
        ExpectAnswers(true, false);
        ExpectGoodPolicy();
    }
}

TEST_F(ContentCheckFault, ContentsAreExaminedOneAfterTheOther)
{
    const auto store = [] {
        StoreSchedule(Xml({{{"first", "mp4", 5}, {"second", "mp4", 6}}}, kRechInfo));
        StoreMedia("first.mp4", 5);
        StoreMedia("second.mp4", 6);
    };
    const std::string firstSeen = SizeLine(kMediaDirectory + "first.mp4", 5);

    store();
    OnLine(firstSeen, [] { fs::remove(kMediaDirectory + "second.mp4"); });
    monitor_->CheckContents();
    EXPECT_EQ(TaggedLines().back(), NotExist("second.mp4"));
    ExpectAnswers(true, false);

    store();
    OnLine(firstSeen, [] { StoreMedia("second.mp4", 7); });
    monitor_->CheckContents();
    EXPECT_EQ(TaggedLines().back(), NotExist("second.mp4"));
    ExpectAnswers(true, false);

    store();
    OnLine(firstSeen, [] { fs::remove(kMediaDirectory + "first.mp4"); }); // too late
    monitor_->CheckContents();
    ExpectAnswers(true, true);
}

TEST_F(ContentCheckFault, RepeatedChecksLeakNoDescriptors)
{
    const std::function<void()> outcomes[] = {
        [] {},
        [] { StoreSchedule("no xml"); },
        [] { fs::remove(kSchedule); },
        [] { fs::remove(kMediaDirectory + "intro.mp4"); },
        [] {
            fs::remove(kSchedule);
            fs::create_directory(kSchedule);
            std::ofstream(kSchedule + "/entry").close();
        },
        [] {
            fs::remove(kSchedule);
            fs::create_symlink("schedule.xml", kSchedule); // throws
        },
    };
    std::size_t descriptors = 0;
    std::size_t blocks = 0;
    int thrown = 0;
    for (int i = 0; i < 1002; ++i) {
        if (i % 6 == 0) {
            fs::remove_all(kSchedule);
            StoreGood();
        }
        outcomes[i % 6]();
        try {
            monitor_->CheckContents();
        } catch (const std::exception&) {
            ++thrown;
        }
        if (i % 6 == 5) {
            recorder::Clear();
            if (i == 5) { // one-time allocations have been made by now
                descriptors = OpenDescriptors();
                blocks = allocation_fault::BlocksInUse();
            }
        } else {
            fs::remove_all(kSchedule);
            StoreSchedule(Xml({{{"intro", "mp4", 5}}}, kRechInfo));
            StoreMedia("intro.mp4", 5);
        }
    }
    EXPECT_EQ(thrown, 167);
    EXPECT_EQ(OpenDescriptors(), descriptors);
    EXPECT_EQ(allocation_fault::BlocksInUse(), blocks);
    ExpectGoodPolicy();
}

TEST_F(ContentCheckFault, LoggingAnErrorTakesNoMemory)
{
    const std::string message = "a message that takes memory, as does each copy of it";
    const std::exception_ptr error = std::make_exception_ptr(CVQMException(7, message));
    recorder::SetListener([&](const std::string& line) {
        if (line == SchedulePathLine()) {
            allocation_fault::FailNth(1);
            std::rethrow_exception(error);
        }
        allocation_fault::FailNth(0);
    });
    EXPECT_FALSE(monitor_->Create());
    recorder::SetListener(nullptr);
    EXPECT_EQ(recorder::Take().back(), CreateError("Create : error " + message + " \n"));
}

} // namespace
