#include <future>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>

#include "Tests/Common/ContentCheckFixture.h"
#include "Tests/VQMSerialize/EmptyText.h"
#include "Tests/VQMSerialize/ParserFault.h"

using recorder::Lines;
namespace fs = std::filesystem;

namespace {

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

TEST_F(ContentCheck, CompleteContentsStoreAndLogThePolicy)
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

TEST_F(ContentCheck, ACopiedPolicyIsComplete)
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
    using parser_fault::EmptyBuffer;
    const struct {
        const char* xml;
        EmptyBuffer emptyBuffer;
        const char* message;
    } cases[] = {
        {"<rsp state='ok'>", EmptyBuffer::Real, kParseErrorMessage},
        {"no xml", EmptyBuffer::Real, kParseErrorMessage},
        {"", EmptyBuffer::Real, RefusalMessage("")},
        {"", EmptyBuffer::Given, kParseErrorMessage},
        {"", EmptyBuffer::Null, kNoBufferMessage},
    };
    for (const auto& test : cases) {
        StoreGood();
        StoreSchedule(test.xml);
        parser_fault::faults().emptyBuffer = test.emptyBuffer;
        monitor_->CheckContents();
        parser_fault::faults() = {};
        EXPECT_EQ(TaggedLines(), Join(Reading(), {ParserLine(test.message)}));
        ExpectAnswers(false, true);
        ExpectGoodPolicy();
    }
}

TEST_F(ContentCheck, AFailedParserCreationLeavesContentsAndPolicy)
{
    StoreGood();
    parser_fault::faults().creation = parser_fault::Creation::Null;
    monitor_->CheckContents();
    parser_fault::faults() = {};
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

TEST_F(ContentCheck, UnloadedConstantsCountAsMissing)
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

TEST_F(ContentCheck, TheCheckStopsAtTheFirstWrongSize)
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

TEST_F(ContentCheck, AMissingContentAndAWrongSizeShareOneLogLine)
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

TEST_F(ContentCheck, ASuccessfulCheckReplacesTheWholePolicy)
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

TEST_F(ContentCheck, SettingsAreLoggedUnderTheLock)
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

TEST_F(ContentCheck, AnswersAreSetBeforeTheSettingsAreLogged)
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

} // namespace
