#include <filesystem>
#include <string>
#include <vector>

#include "Tests/Common/ContentCheckFixture.h"
#include "Tests/Support/Descriptors.h"
#include "Tests/Support/EachAllocation.h"

// Every allocation of the content check fails in turn, the file's reading and its parse included.
// The current policy is the old or the new one whole, the answers fit it, and nothing stays locked,
// open or allocated.

namespace {

using recorder::Lines;

constexpr char kNewRechInfo[] =
    "<rech_info IsMaster='1' NumOfPlayer='7' IPAddrOfMaster='a new address that takes its own memory' IPType='5' "
    "IPAddr='a new player that takes its own memory' SubnetMask='a new mask that takes its own memory' "
    "Gateway='a new gateway that takes its own memory' TypeOfNetwork='6' "
    "WirelessGroupName='a new group that takes its own memory' nImageDuration='8'/>";

/// Every text of a policy in one, each field in its place.
std::string Text(const _VQMPolicy& policy)
{
    const auto number = [](auto value) { return std::to_string(value) + '|'; };
    std::string text = number(policy.bError) + number(policy.nCheckPeriod) + number(policy.nProjectID) +
                       policy.strVersion + '|' + number(policy.nItemCount) + number(policy.nTotalSize) +
                       number(policy.stExpiration.nYear);
    for (const _VQMSchdule& schedule : policy.listSchedule) {
        text += '[' + number(schedule.stStartTime.nHour) + number(schedule.stEndTime.nMinute);
        for (const _VQMContentInfo& content : schedule.listContents) {
            text += content.strID + '|' + content.strName + '|' + number(content.nSize) + content.strFormat + '|' +
                    number(content.nOrder);
        }
        text += ']';
    }
    return text + number(policy.IsMaster) + number(policy.NumOfPlayer) + policy.IPAddrOfMaster + '|' +
           number(policy.IPType) + policy.IPAddr + '|' + policy.SubnetMask + '|' + policy.Gateway + '|' +
           number(policy.TypeOfNetwork) + policy.WirelessGroupName + '|' + number(policy.nImageDuration);
}

/// A policy that a check has stored, and another one that lies in its place on disk.
class ContentCheckMemory : public ContentCheck {
protected:
    void SetUp() override
    {
        ContentCheck::SetUp();
        OpenConstants::m_DataCache = {{"ScheduleFile", kFile}};
        StoreMedia("a medium with a long name.mp4", 5);
        StoreMedia("intro.mp4", 7);
        // Two read units.
        StoreFile(Xml({{{"intro", "mp4", 7}}, {{"a medium with a long name", "mp4", 5}, {"intro", "mp4", 7}}},
                      std::string(110000, ' ') + kNewRechInfo));
        monitor_->CheckContents();
        ExpectAnswers(true, true);
        newText_ = Text(Current());
        newFile_ = FileContent();
        StoreFile(Xml({{{"a medium with a long name", "mp4", 5}}}, kRechInfo));
        monitor_->CheckContents();
        ExpectAnswers(true, true);
        oldText_ = Text(Current());
        oldFile_ = FileContent();
        ASSERT_NE(oldText_, newText_);
        descriptors_ = OpenDescriptors();
        // Everything that is kept from a first call is there before a round counts.
        Restore();
    }

    /// The old policy is current, the new one lies on disk.
    void Restore()
    {
        StoreFile(oldFile_);
        monitor_->CheckContents();
        StoreFile(newFile_);
        recorder::Clear();
    }

    /// The same with a monitor that has never seen another policy.
    void Renew()
    {
        CVQMSyncDemoMonitor::DestroyInstance();
        monitor_ = CVQMSyncDemoMonitor::GetInstance();
        Restore();
    }

    void ExpectUnlockedAndClosed()
    {
        ASSERT_TRUE(MutexOf(*monitor_).try_lock());
        MutexOf(*monitor_).unlock();
        EXPECT_EQ(OpenDescriptors(), descriptors_);
    }

    static std::string Path() { return kScheduleDirectory + kFile; }

    static void StoreFile(const std::string& xml) { std::ofstream(Path()) << xml; }

    static std::string FileContent()
    {
        std::ifstream file(Path());
        return {std::istreambuf_iterator<char>(file), {}};
    }

    /// Both kinds of fault, one after the other.
    template <typename Round>
    static Outcomes ForEach(Round round)
    {
        const Outcomes own = ForEachAllocation(round);
        const Outcomes parser = ForEachParserAllocation(round);
        EXPECT_EQ(parser.thrown, 0U);
        return {own.refused + parser.refused, own.thrown};
    }

    static constexpr char kFile[] = "a schedule with a long name.xml";
    std::string oldText_;
    std::string newText_;
    std::string oldFile_;
    std::string newFile_;
    std::size_t descriptors_ = 0;
};

} // namespace

TEST_F(ContentCheckMemory, AFailedCheckKeepsTheOldPolicy)
{
    const Outcomes outcomes = ForEach([this](auto run) {
        const Outcome outcome = run([this] {
            monitor_->CheckContents();
            return monitor_->CheckHaveSchedule();
        });
        ExpectUnlockedAndClosed();
        switch (outcome) {
        case Outcome::Done:
            ExpectAnswers(true, true);
            EXPECT_EQ(Text(Current()), newText_);
            break;
        case Outcome::Refused: // a schedule that cannot be read
            ExpectAnswers(false, true);
            EXPECT_EQ(Text(Current()), oldText_);
            break;
        case Outcome::Thrown: // either answer about the schedule is allowed
            ExpectAnswers(true, true);
            EXPECT_EQ(Text(Current()), oldText_);
            break;
        }
        monitor_->CheckContents();
        ExpectAnswers(true, true);
        EXPECT_EQ(Text(Current()), newText_) << "the next check";
        Restore();
    });
    EXPECT_GT(outcomes.refused, 10U);
    EXPECT_GT(outcomes.thrown, 10U);
}

TEST_F(ContentCheckMemory, AFailedCreateIsLoggedAndTriedAgain)
{
    const Lines error = {CreateError("Create : error std::bad_alloc \n")};
    Renew();
    const Outcomes outcomes = ForEachAllocation([&](auto run) {
        CVQMSyncDemoMonitor::DestroyInstance();
        monitor_ = CVQMSyncDemoMonitor::GetInstance();
        const std::string fresh = Text(Current());
        // False stands for an exception, and for a schedule that cannot be read.
        bool ran = false;
        const Outcome outcome = run([&] {
            ran = monitor_->Create();
            return ran && monitor_->CheckHaveSchedule();
        });
        ExpectUnlockedAndClosed();
        EXPECT_NE(outcome, Outcome::Thrown);
        EXPECT_EQ(recorder::Trace().back() == error.front(), !ran);
        EXPECT_EQ(Text(Current()), outcome == Outcome::Done ? newText_ : fresh);
        EXPECT_EQ(monitor_->CheckHaveContents(), outcome == Outcome::Done);
        recorder::Clear();
        EXPECT_TRUE(monitor_->Create());
        EXPECT_EQ(recorder::Take().empty(), ran) << "once without an exception is enough";
        if (!ran) {
            EXPECT_EQ(Text(Current()), newText_);
        }
        Renew();
    });
    EXPECT_GT(outcomes.refused, 20U);
}

TEST_F(ContentCheckMemory, FailedParsingLeavesTheTargetUnchanged)
{
    const Outcomes own = ForEach([this](auto run) {
        _VQMPolicy target;
        target.strVersion = "an old version that takes its own memory";
        target.listSchedule.resize(9);
        const std::string before = Text(target);
        const Outcome outcome = run([&] { return monitor_->ParseStoredSchedule(Path(), &target); });
        ExpectUnlockedAndClosed();
        EXPECT_EQ(Text(target), outcome == Outcome::Done ? newText_ : before);
        EXPECT_EQ(Text(Current()), oldText_);
        ExpectAnswers(true, true);
    });
    EXPECT_GT(own.refused, 10U);
    EXPECT_GT(own.thrown, 10U);

    const Outcomes current = ForEach([this](auto run) {
        const Outcome outcome = run([&] { return monitor_->ParseStoredSchedule(Path(), nullptr); });
        ExpectUnlockedAndClosed();
        EXPECT_EQ(Text(Current()), outcome == Outcome::Done ? newText_ : oldText_);
        ExpectAnswers(true, true);
        Restore();
    });
    EXPECT_GT(current.refused, 10U);
    EXPECT_GT(current.thrown, 10U);
}

TEST_F(ContentCheckMemory, AFailedCopyLeavesTheCallersPolicyUnchanged)
{
    const Outcomes outcomes = ForEachAllocation([this](auto run) {
        _VQMPolicy out;
        out.strVersion = "an old version that takes its own memory";
        out.listSchedule.resize(9);
        const std::string before = Text(out);
        const Outcome outcome = run([&] {
            monitor_->GetCurrentPolicy(out);
            return true;
        });
        ExpectUnlockedAndClosed();
        EXPECT_EQ(Text(out), outcome == Outcome::Done ? oldText_ : before);
        EXPECT_EQ(Text(Current()), oldText_);
    });
    EXPECT_GE(outcomes.thrown, 3U);
}

TEST_F(ContentCheckMemory, ClearingThePolicyTakesNoMemory)
{
    const Outcomes outcomes = ForEachAllocation([this](auto run) {
        run([this] {
            monitor_->ClearCurrentPlolicy();
            return true;
        });
        EXPECT_TRUE(Current().listSchedule.empty());
        Restore();
    });
    EXPECT_EQ(outcomes.thrown, 0U);
}

TEST_F(ContentCheckMemory, TakingThePolicyTakesNoMemoryAndLeavesAnEmptyOneWithTheAnswers)
{
    Renew();
    const Outcomes outcomes = ForEachAllocation([this](auto run) {
        _VQMPolicy taken;
        run([&] {
            monitor_->TakeCurrentPolicy(taken);
            return true;
        });
        EXPECT_EQ(Text(taken), oldText_);
        EXPECT_EQ(Text(Current()), Text(_VQMPolicy()));
        ExpectAnswers(true, true);
        Renew();
    });
    EXPECT_EQ(outcomes.thrown, 0U);
}
