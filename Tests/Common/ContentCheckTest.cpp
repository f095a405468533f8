#include <atomic>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <linux/capability.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <boost/filesystem/operations.hpp>
#include <expat.h>
#include <gmock/gmock.h>

#include "Common/VQMConfig.h"
#include "Common/VQMException.h"
#include "Common/VQMSyncDemoMonitor.h"
#include "Data/VQMDataConstants.h"
#include "Tests/Platform/Recorder.h"

// The content check, against the directories that are compiled in. Runs in Scripts/sandbox, where
// they lie on a file system of this program's own.

namespace {
bool refuseParser = false;
} // namespace

/// Takes the place of the parser library's, which never fails on its own.
XML_Parser XML_ParserCreate(const XML_Char* encoding)
{
    return refuseParser ? nullptr : XML_ParserCreate_MM(encoding, nullptr, nullptr);
}

namespace {

using recorder::Lines;
namespace fs = std::filesystem;

const std::string kScheduleDirectory = std::string(VQM_APPS_DIR "/" VQM_APP_ID "/RECH") + "/";
const std::string kMediaDirectory = std::string(VQM_MEDIA_DIR) + "/";
constexpr char kSeparator[] = "#########################################################";

struct OpenConstants : CVQMDataConstants {
    using CVQMDataConstants::m_DataCache;
};

/// The monitor's policy mutex, which is nobody else's business.
template <auto mutex>
struct PolicyMutex {
    friend boost::mutex& MutexOf(CVQMSyncDemoMonitor& monitor) { return monitor.*mutex; }
};
template struct PolicyMutex<&CVQMSyncDemoMonitor::m_policyMutex>;
boost::mutex& MutexOf(CVQMSyncDemoMonitor& monitor);

struct Content {
    std::string name;
    std::string format;
    unsigned long long size;
};

std::string Xml(const std::vector<std::vector<Content>>& schedules, const std::string& rechInfo)
{
    std::string xml = "<rsp state='ok'><policy period='30'/>"
                      "<project id='1001' version='1.2' item_count='2' total_size='3' expiration='2016-12-31'/>";
    for (const auto& contents : schedules) {
        xml += "<schedule start_time='09:00:00' end_time='18:30:00'>";
        for (const Content& content : contents) {
            xml += "<item id='A' order='1'><name>" + content.name + "</name><size>" + std::to_string(content.size) +
                   "</size><format>" + content.format + "</format></item>";
        }
        xml += "</schedule>";
    }
    return xml + rechInfo + "</rsp>";
}

constexpr char kRechInfo[] = "<rech_info IsMaster='1' NumOfPlayer='2' IPAddrOfMaster='192.168.0.10' IPType='3' "
                             "IPAddr='192.168.0.11' SubnetMask='255.255.255.0' Gateway='192.168.0.1' "
                             "TypeOfNetwork='4' WirelessGroupName='100%s' nImageDuration='10'/>";

/// Drops the rights by which an owner of the namespace passes any permission.
class WithoutOverride {
public:
    WithoutOverride()
    {
        Get(saved_);
        __user_cap_data_struct reduced[2] = {saved_[0], saved_[1]};
        reduced[0].effective &= ~((1U << CAP_DAC_OVERRIDE) | (1U << CAP_DAC_READ_SEARCH));
        Set(reduced);
    }
    ~WithoutOverride() { Set(saved_); }
    WithoutOverride(const WithoutOverride&) = delete;
    WithoutOverride& operator=(const WithoutOverride&) = delete;

private:
    static void Get(__user_cap_data_struct* data)
    {
        __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
        EXPECT_EQ(syscall(SYS_capget, &header, data), 0);
    }
    static void Set(__user_cap_data_struct* data)
    {
        __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
        EXPECT_EQ(syscall(SYS_capset, &header, data), 0);
    }

    __user_cap_data_struct saved_[2] = {};
};

class ContentCheck : public testing::Test {
protected:
    void SetUp() override
    {
        struct statfs status = {};
        ASSERT_EQ(statfs("/opt", &status), 0);
        ASSERT_EQ(status.f_type, 0x01021994) << "run it with Scripts/sandbox --empty";
        fs::create_directories(kScheduleDirectory);
        fs::create_directories(kMediaDirectory);
        OpenConstants::m_DataCache = {{"ScheduleFile", "schedule.xml"}};
        monitor_ = CVQMSyncDemoMonitor::GetInstance();
        recorder::Clear();
    }

    void TearDown() override
    {
        recorder::SetListener(nullptr);
        CVQMSyncDemoMonitor::DestroyInstance();
        OpenConstants::m_DataCache.clear();
        std::error_code ignored; // a test may have removed it
        fs::permissions(kScheduleDirectory, fs::perms::owner_all, fs::perm_options::add, ignored);
        fs::remove_all(kScheduleDirectory);
        fs::remove_all(kMediaDirectory);
    }

    static void StoreSchedule(const std::string& xml) { std::ofstream(kScheduleDirectory + "schedule.xml") << xml; }

    static void StoreMedia(const std::string& name, unsigned long long size)
    {
        std::ofstream(kMediaDirectory + name).close();
        fs::resize_file(kMediaDirectory + name, size);
    }

    /// A check that succeeds: two answers and a policy to lose.
    void StoreGood()
    {
        StoreSchedule(Xml({{{"intro", "mp4", 5}}}, kRechInfo));
        StoreMedia("intro.mp4", 5);
        monitor_->CheckContents();
        ExpectAnswers(true, true);
        recorder::Clear();
    }

    void ExpectAnswers(bool schedule, bool contents)
    {
        EXPECT_EQ(monitor_->CheckHaveSchedule(), schedule);
        EXPECT_EQ(monitor_->CheckHaveContents(), contents);
    }

    _VQMPolicy Current()
    {
        _VQMPolicy policy;
        monitor_->GetCurrentPolicy(policy);
        return policy;
    }

    /// The current policy is the one of `StoreGood`.
    void ExpectGoodPolicy()
    {
        const _VQMPolicy policy = Current();
        EXPECT_FALSE(policy.bError);
        EXPECT_EQ(policy.nCheckPeriod, 30);
        EXPECT_EQ(policy.nProjectID, 1001U);
        EXPECT_EQ(policy.strVersion, "1.2");
        EXPECT_EQ(policy.nItemCount, 2);
        EXPECT_EQ(policy.nTotalSize, 3U);
        EXPECT_EQ(policy.stExpiration.nYear, 2016);
        ASSERT_EQ(policy.listSchedule.size(), 1U);
        EXPECT_EQ(policy.listSchedule.front().stStartTime.nHour, 9);
        ASSERT_EQ(policy.listSchedule.front().listContents.size(), 1U);
        EXPECT_EQ(policy.listSchedule.front().listContents.front().strName, "intro.mp4");
        EXPECT_TRUE(policy.IsMaster);
        EXPECT_EQ(policy.NumOfPlayer, 2);
        EXPECT_EQ(policy.IPAddrOfMaster, "192.168.0.10");
        EXPECT_EQ(policy.IPType, 3);
        EXPECT_EQ(policy.IPAddr, "192.168.0.11");
        EXPECT_EQ(policy.SubnetMask, "255.255.255.0");
        EXPECT_EQ(policy.Gateway, "192.168.0.1");
        EXPECT_EQ(policy.TypeOfNetwork, 4);
        EXPECT_EQ(policy.WirelessGroupName, "100%s");
        EXPECT_EQ(policy.nImageDuration, 10);
    }

    static std::string Line(const std::string& function, const std::string& message)
    {
        return recorder::LogOf("Quillmere", "VQMSyncDemoMonitor.cpp").Debug(function, message);
    }
    static std::string PipeLine(const std::string& function, const std::string& message)
    {
        return recorder::LogOf("Quillmere", "VQMFilePipe.cpp").Debug(function, message);
    }
    static std::string CreateError(const std::string& message)
    {
        return recorder::LogOf("Quillmere", "VQMSyncDemoMonitor.cpp").Error("Create", message);
    }
    static std::string SizeLine(const std::string& path, unsigned long long size)
    {
        return PipeLine("GetFileSize", "CVQMFilePipe::GetFileSize - (" + path + ") : " + std::to_string(size) + " \n");
    }
    static std::string ParserLine(const std::string& message)
    {
        return recorder::LogOf("Quillmere", "VQMXMLSerialize.cpp").Debug("Deserialize", message);
    }
    static std::string SchedulePathLine()
    {
        return Line("GetSyncDemoSchedulePath",
                    "CVQMSyncDemoMonitor::GetSyncDemoSchedulePath - " + kScheduleDirectory + "\n");
    }
    static std::string MediaPathLine()
    {
        return Line("GetSyncDemoMediaPath", "CVQMSyncDemoMonitor::GetSyncDemoMediaPath - " + kMediaDirectory + "\n");
    }

    /// Everything that was logged except the schedule parser's own lines, which carry no tag.
    static Lines TaggedLines()
    {
        Lines lines;
        for (const std::string& line : recorder::Take()) {
            if (line.rfind("D/(null) ", 0) != 0) {
                lines.push_back(line);
            }
        }
        return lines;
    }

    /// What a check logs until the schedule is parsed.
    static Lines Reading()
    {
        const std::string path = kScheduleDirectory + "schedule.xml";
        return {SchedulePathLine(), PipeLine("FOpen", "CVQMFilePipe::FOpen\n"),
                PipeLine("FOpen", "CVQMFilePipe::FOpen - RequestCommand is Read\n"),
                SizeLine(path, fs::file_size(path))};
    }

    static Lines Join(Lines first, const Lines& second)
    {
        first.insert(first.end(), second.begin(), second.end());
        return first;
    }

    static Lines Dump(const std::vector<std::string>& values)
    {
        Lines lines = {Line("CheckContents", kSeparator)};
        for (const std::string& value : values) {
            lines.push_back(Line("CheckContents", "rech_info - " + value + "\n"));
        }
        lines.push_back(Line("CheckContents", kSeparator));
        return lines;
    }

    CVQMSyncDemoMonitor* monitor_ = nullptr;
};

const std::vector<std::string> kGoodDump = {"IsMaster 1",
                                            "NumOfPlayer 2",
                                            "IPAddrOfMaster 192.168.0.10",
                                            "IPType 3",
                                            "IPAddr 192.168.0.11",
                                            "SubnetMask 255.255.255.0",
                                            "Gateway 192.168.0.1",
                                            "TypeOfNetwork 4",
                                            "WirelessGroupName 100%s",
                                            "nImageDuration 10"};
const std::vector<std::string> kEmptyDump = {
    "IsMaster 0",  "NumOfPlayer 0", "IPAddrOfMaster ", "IPType 0",           "IPAddr ",
    "SubnetMask ", "Gateway ",      "TypeOfNetwork 0", "WirelessGroupName ", "nImageDuration 0"};

TEST_F(ContentCheck, AFreshMonitorHasAnEmptyPolicy)
{
    ExpectAnswers(false, false);
    _VQMPolicy policy;
    policy.bError = false;
    policy.listSchedule.resize(3);
    policy.IPAddr = "old";
    monitor_->GetCurrentPolicy(policy);
    EXPECT_TRUE(policy.bError);
    EXPECT_TRUE(policy.listSchedule.empty());
    EXPECT_EQ(policy.IPAddr, "");
    EXPECT_EQ(recorder::Take(), Lines());
}

TEST_F(ContentCheck, EverythingPresentStoresThePolicyAndDumpsIt)
{
    StoreSchedule(Xml({{{"intro", "mp4", 5}, {"logo", "jpg", 7}}, {{"late", "mp4", (1ULL << 32) + 1}}}, kRechInfo));
    StoreMedia("intro.mp4", 5);
    StoreMedia("logo.jpg", 7);
    StoreMedia("late.mp4", (1ULL << 32) + 1);
    monitor_->CheckContents();
    EXPECT_EQ(TaggedLines(), Join(Join(Reading(), {ParserLine("ParseHttpResponse End !!!!\n"), MediaPathLine(),
                                                   SizeLine(kMediaDirectory + "intro.mp4", 5),
                                                   SizeLine(kMediaDirectory + "logo.jpg", 7),
                                                   SizeLine(kMediaDirectory + "late.mp4", (1ULL << 32) + 1)}),
                                  Dump(kGoodDump)));
    ExpectAnswers(true, true);
    EXPECT_EQ(Current().listSchedule.size(), 2U);
}

TEST_F(ContentCheck, APolicyThatIsCopiedOutIsWhole)
{
    StoreGood();
    ExpectGoodPolicy();
}

TEST_F(ContentCheck, AMissingScheduleLeavesContentsAndPolicy)
{
    StoreGood();
    fs::remove(kScheduleDirectory + "schedule.xml");
    const std::string path = kScheduleDirectory + "schedule.xml";
    const Lines expected = {
        SchedulePathLine(),
        Line("CheckContents", "CVQMSyncDemoMonitor::CheckContents - schedule not exist (" + path + ") \n")};
    monitor_->CheckContents();
    EXPECT_EQ(TaggedLines(), expected);
    ExpectAnswers(false, true);
    ExpectGoodPolicy();

    // A file where a directory should be is absence as well.
    fs::remove_all(kScheduleDirectory);
    std::ofstream(kScheduleDirectory.substr(0, kScheduleDirectory.size() - 1)).close();
    monitor_->CheckContents();
    EXPECT_EQ(TaggedLines(), expected);
    fs::remove(kScheduleDirectory.substr(0, kScheduleDirectory.size() - 1));
    fs::create_directories(kScheduleDirectory);
}

TEST_F(ContentCheck, AScheduleThatDoesNotParseLeavesContentsAndPolicy)
{
    for (const char* xml : {"", "<rsp state='ok'>", "no xml"}) {
        StoreGood();
        StoreSchedule(xml);
        monitor_->CheckContents();
        EXPECT_EQ(TaggedLines(), Join(Reading(), {ParserLine("  PraseError !!!!\n")}));
        ExpectAnswers(false, true);
        ExpectGoodPolicy();
    }
}

TEST_F(ContentCheck, AParserThatCannotBeMadeLeavesContentsAndPolicy)
{
    StoreGood();
    refuseParser = true;
    monitor_->CheckContents();
    refuseParser = false;
    EXPECT_EQ(TaggedLines(), Join(Reading(), {recorder::LogOf("Quillmere", "VQMXMLSerialize.cpp")
                                                  .Debug("Create", " XML_ParserCreate is Failed!!!\n")}));
    ExpectAnswers(false, true);
    ExpectGoodPolicy();
}

TEST_F(ContentCheck, WithoutTheConstantTheDirectoryItselfIsParsed)
{
    StoreGood();
    OpenConstants::m_DataCache = {{"Other", "x"}};
    struct stat status = {};
    ASSERT_EQ(stat(kScheduleDirectory.c_str(), &status), 0);
    monitor_->CheckContents();
    EXPECT_EQ(
        TaggedLines(),
        (Lines{SchedulePathLine(), PipeLine("FOpen", "CVQMFilePipe::FOpen\n"),
               PipeLine("FOpen", "CVQMFilePipe::FOpen - RequestCommand is Read\n"),
               SizeLine(kScheduleDirectory, static_cast<unsigned long long>(status.st_size)),
               PipeLine("Request", "CVQMFilePipe::Request - error File Read Error : " + kScheduleDirectory + " \n")}));
    ExpectAnswers(false, true);
    ExpectGoodPolicy();
}

TEST_F(ContentCheck, ConstantsThatWereNeverLoadedAreLikeNone)
{
    OpenConstants::m_DataCache.clear();
    fs::remove_all(kScheduleDirectory);
    monitor_->CheckContents();
    EXPECT_EQ(TaggedLines(),
              (Lines{SchedulePathLine(), Line("CheckContents", "CVQMSyncDemoMonitor::CheckContents - schedule not "
                                                               "exist (" +
                                                                   kScheduleDirectory + ") \n")}));
    ExpectAnswers(false, false);
}

TEST_F(ContentCheck, TheFirstContentOfAnotherSizeEndsTheWalk)
{
    StoreGood();
    StoreMedia("intro.mp4", 5);
    StoreMedia("logo.jpg", 8);
    StoreMedia("late.mp4", 9);
    StoreSchedule(Xml({{{"intro", "mp4", 5}, {"logo", "jpg", 7}}, {{"late", "mp4", 9}}}, ""));
    monitor_->CheckContents();
    EXPECT_EQ(TaggedLines(),
              Join(Reading(), {ParserLine("ParseHttpResponse End !!!!\n"), MediaPathLine(),
                               SizeLine(kMediaDirectory + "intro.mp4", 5), SizeLine(kMediaDirectory + "logo.jpg", 8),
                               Line("CheckContents", "CVQMSyncDemoMonitor::CheckContents - " + kMediaDirectory +
                                                         "logo.jpg not exist \n")}));
    ExpectAnswers(true, false);
    ExpectGoodPolicy();
}

TEST_F(ContentCheck, AMissingContentIsLoggedInTheSameWords)
{
    StoreGood();
    fs::remove(kMediaDirectory + "intro.mp4");
    monitor_->CheckContents();
    EXPECT_EQ(TaggedLines(),
              Join(Reading(), {ParserLine("ParseHttpResponse End !!!!\n"), MediaPathLine(),
                               PipeLine("GetFileSize", "CVQMFilePipe::GetFileSize - _stati64 is not valid \n"),
                               Line("CheckContents", "CVQMSyncDemoMonitor::CheckContents - " + kMediaDirectory +
                                                         "intro.mp4 not exist \n")}));
    ExpectAnswers(true, false);
    ExpectGoodPolicy();
}

TEST_F(ContentCheck, SizesAreComparedIn64Bits)
{
    StoreSchedule(Xml({{{"intro", "mp4", 5}}}, ""));
    StoreMedia("intro.mp4", (1ULL << 32) + 5);
    monitor_->CheckContents();
    ExpectAnswers(true, false);
}

TEST_F(ContentCheck, FilesDatedAfter2038Count)
{
    StoreSchedule(Xml({{{"intro", "mp4", 5}}}, ""));
    StoreMedia("intro.mp4", 5);
    for (const std::string& directory : {kScheduleDirectory, kMediaDirectory}) {
        for (const auto& entry : fs::directory_iterator(directory)) {
            struct timespec times[2] = {};
            times[0].tv_sec = times[1].tv_sec = static_cast<time_t>(4294967296LL);
            ASSERT_EQ(utimensat(AT_FDCWD, entry.path().c_str(), times, 0), 0);
        }
    }
    monitor_->CheckContents();
    ExpectAnswers(true, true);
}

TEST_F(ContentCheck, AContentOfNoBytesMayBeAbsent)
{
    StoreSchedule(Xml({{{"nothing", "mp4", 0}}}, ""));
    monitor_->CheckContents();
    ExpectAnswers(true, true);
}

TEST_F(ContentCheck, AScheduleWithoutAnythingToPlayIsComplete)
{
    for (const std::string& xml : {Xml({}, ""), Xml({{}, {}}, "")}) {
        StoreSchedule(xml);
        monitor_->CheckContents();
        EXPECT_EQ(TaggedLines(), Join(Join(Reading(), {ParserLine("ParseHttpResponse End !!!!\n"), MediaPathLine()}),
                                      Dump(kEmptyDump)));
        ExpectAnswers(true, true);
    }
    EXPECT_EQ(Current().listSchedule.size(), 2U);
}

TEST_F(ContentCheck, ASuccessfulCheckReplacesThePolicyWhole)
{
    StoreGood();
    StoreSchedule("<rsp/>");
    monitor_->CheckContents();
    ExpectAnswers(true, true);
    const _VQMPolicy policy = Current();
    EXPECT_TRUE(policy.bError);
    EXPECT_TRUE(policy.listSchedule.empty());
    EXPECT_EQ(policy.strVersion, "");
    EXPECT_EQ(policy.nCheckPeriod, 0);
}

TEST_F(ContentCheck, TheDumpIsLoggedUnderTheLock)
{
    StoreSchedule(Xml({{{"intro", "mp4", 5}}}, kRechInfo));
    StoreMedia("intro.mp4", 5);
    std::vector<std::string> locked;
    recorder::SetListener([&](const std::string& line) {
        const bool free = std::async(std::launch::async, [&] {
                              boost::mutex& mutex = MutexOf(*monitor_);
                              const bool taken = mutex.try_lock();
                              if (taken) {
                                  mutex.unlock();
                              }
                              return taken;
                          }).get();
        if (!free) {
            locked.push_back(line);
        }
    });
    monitor_->CheckContents();
    recorder::SetListener(nullptr);
    EXPECT_EQ(locked, Dump(kGoodDump));
}

TEST_F(ContentCheck, AnswersAreThereWhenTheDumpIs)
{
    StoreSchedule(Xml({}, ""));
    bool before = false;
    recorder::SetListener([&](const std::string& line) {
        if (line == Line("CheckContents", kSeparator)) {
            before = before || monitor_->CheckHaveContents();
        }
    });
    monitor_->CheckContents();
    EXPECT_TRUE(before);
}

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

/// Create.

TEST_F(ContentCheck, CreateRunsTheCheckOnceWhateverItFinds)
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

TEST_F(ContentCheck, AnExceptionDuringTheDumpReleasesTheLock)
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

/// ParseStoredSchedule, GetCurrentPolicy, ClearCurrentPlolicy.

TEST_F(ContentCheck, ParsingIntoATargetLeavesTheMonitorAlone)
{
    StoreGood();
    StoreSchedule(Xml({}, ""));
    _VQMPolicy policy;
    boost::mutex::scoped_lock lock(MutexOf(*monitor_)); // no lock is taken, or this would hang
    EXPECT_TRUE(monitor_->ParseStoredSchedule(kScheduleDirectory + "schedule.xml", &policy));
    lock.unlock();
    EXPECT_FALSE(policy.bError);
    EXPECT_EQ(policy.nProjectID, 1001U);
    EXPECT_TRUE(policy.listSchedule.empty());
    ExpectGoodPolicy();
    ExpectAnswers(true, true);
}

TEST_F(ContentCheck, ParsingWithoutATargetStoresThePolicyUnchecked)
{
    StoreSchedule(Xml({{{"missing", "mp4", 5}}}, kRechInfo));
    EXPECT_TRUE(monitor_->ParseStoredSchedule(kScheduleDirectory + "schedule.xml", nullptr));
    Lines expected = Join(Reading(), {ParserLine("ParseHttpResponse End !!!!\n")});
    expected.erase(expected.begin()); // nobody asked for the directory
    EXPECT_EQ(TaggedLines(), expected);
    EXPECT_EQ(Current().listSchedule.size(), 1U);
    EXPECT_EQ(Current().IPAddr, "192.168.0.11");
    ExpectAnswers(false, false);
}

TEST_F(ContentCheck, ParsingThatFailsLeavesTheTarget)
{
    StoreGood();
    _VQMPolicy policy;
    policy.strVersion = "mine";
    EXPECT_FALSE(monitor_->ParseStoredSchedule("", &policy));
    EXPECT_EQ(recorder::Take(), Lines());
    StoreSchedule("<rsp state='ok'><project version='other'/>");
    for (const std::string& path :
         {kScheduleDirectory + "missing", kScheduleDirectory + "schedule.xml", kScheduleDirectory}) {
        EXPECT_FALSE(monitor_->ParseStoredSchedule(path, &policy));
        EXPECT_FALSE(monitor_->ParseStoredSchedule(path, nullptr));
    }
    EXPECT_EQ(policy.strVersion, "mine");
    ExpectGoodPolicy();
    ExpectAnswers(true, true);
}

TEST_F(ContentCheck, AScheduleOfManyReadUnitsIsReadWhole)
{
    std::vector<Content> contents(5000, Content{"nothing", "mp4", 0});
    StoreSchedule(Xml({contents}, kRechInfo));
    ASSERT_GT(fs::file_size(kScheduleDirectory + "schedule.xml"), 3U * 102400U);
    monitor_->CheckContents();
    ExpectAnswers(true, true);
    EXPECT_EQ(Current().listSchedule.front().listContents.size(), 5000U);
    EXPECT_EQ(Current().nImageDuration, 10);
}

TEST_F(ContentCheck, ClearingKeepsPeriodVersionExpirationAndIpType)
{
    StoreGood();
    monitor_->ClearCurrentPlolicy();
    EXPECT_EQ(recorder::Take(), Lines());
    const _VQMPolicy policy = Current();
    EXPECT_TRUE(policy.bError);
    EXPECT_TRUE(policy.listSchedule.empty());
    EXPECT_EQ(policy.IPAddrOfMaster, "");
    EXPECT_EQ(policy.IPAddr, "");
    EXPECT_EQ(policy.SubnetMask, "");
    EXPECT_EQ(policy.Gateway, "");
    EXPECT_EQ(policy.WirelessGroupName, "");
    EXPECT_FALSE(policy.IsMaster);
    EXPECT_EQ(policy.NumOfPlayer, 0);
    EXPECT_EQ(policy.TypeOfNetwork, 0);
    EXPECT_EQ(policy.nImageDuration, 0);
    EXPECT_EQ(policy.nItemCount, 0);
    EXPECT_EQ(policy.nTotalSize, 0U);
    EXPECT_EQ(policy.nProjectID, 0U);

    EXPECT_EQ(policy.nCheckPeriod, 30);
    EXPECT_EQ(policy.strVersion, "1.2");
    EXPECT_EQ(policy.stExpiration.nYear, 2016);
    EXPECT_EQ(policy.stExpiration.nMonth, 12);
    EXPECT_EQ(policy.stExpiration.nDay, 31);
    EXPECT_EQ(policy.IPType, 3);
    ExpectAnswers(true, true);
}

TEST_F(ContentCheck, CopiesSeeEachPolicyWhole)
{
    StoreMedia("intro.mp4", 5);
    StoreSchedule(Xml({{{"intro", "mp4", 5}}}, kRechInfo));
    std::atomic<bool> stop = false;
    std::thread reader([&] {
        while (!stop) {
            const _VQMPolicy policy = Current();
            EXPECT_EQ(policy.bError, policy.listSchedule.empty());
            EXPECT_EQ(policy.bError, policy.IPAddr.empty());
        }
    });
    for (int i = 0; i < 50; ++i) {
        monitor_->CheckContents();
        monitor_->ClearCurrentPlolicy();
    }
    stop = true;
    reader.join();
}

TEST_F(ContentCheck, TheMonitorDiesWithItsPolicy)
{
    StoreGood();
    CVQMSyncDemoMonitor::DestroyInstance();
    monitor_ = CVQMSyncDemoMonitor::GetInstance();
    ExpectAnswers(false, false);
    EXPECT_TRUE(Current().bError);
    EXPECT_TRUE(Current().listSchedule.empty());
}

} // namespace
