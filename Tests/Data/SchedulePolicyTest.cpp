#include <algorithm>
#include <cstddef>
#include <type_traits>

#include "Tests/Data/ScheduleFixture.h"
#include "Tests/Support/VirtualSlot.h"

using recorder::Lines;
using recorder::Take;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

static_assert(offsetof(_VQMTime, nYear) == 0 && offsetof(_VQMTime, nMonth) == 4 && offsetof(_VQMTime, nDay) == 8);
static_assert(offsetof(_VQMTime, nHour) == 12 && offsetof(_VQMTime, nMinute) == 16);
static_assert(offsetof(_VQMTime, nSecond) == 20 && offsetof(_VQMTime, nSpare) == 24 && sizeof(_VQMTime) == 28);
static_assert(!std::is_polymorphic_v<_VQMPolicy> && !std::is_polymorphic_v<_VQMSchdule>);
static_assert(!std::is_polymorphic_v<_VQMContentInfo> && std::is_trivially_copyable_v<_VQMTime>);
static_assert(std::is_base_of_v<CVQMDataSerializableObject, CVQMScheduleContainer>);

struct OneMoreOperation : CVQMScheduleContainer {
    virtual void Last() {}
};

// The container's members, which are nobody else's business.
template <typename Member, Member CVQMScheduleContainer::*member>
struct Expose {
    friend Member& MemberOf(CVQMScheduleContainer& container, const Member* /*type*/) { return container.*member; }
};
template struct Expose<_VQMPolicy, &CVQMScheduleContainer::m_stPolicy>;
template struct Expose<int, &CVQMScheduleContainer::nElementState>;
template struct Expose<_VQMSchdule, &CVQMScheduleContainer::m_stSchedule>;
template struct Expose<_VQMContentInfo, &CVQMScheduleContainer::m_stContent>;
_VQMPolicy& MemberOf(CVQMScheduleContainer& container, const _VQMPolicy* type);
int& MemberOf(CVQMScheduleContainer& container, const int* type);
_VQMSchdule& MemberOf(CVQMScheduleContainer& container, const _VQMSchdule* type);
_VQMContentInfo& MemberOf(CVQMScheduleContainer& container, const _VQMContentInfo* type);

class SchedulePolicy : public ScheduleTest {
protected:
    template <typename Member>
    Member& Inner()
    {
        return MemberOf(container, static_cast<const Member*>(nullptr));
    }

    /// Every field holds something of its own.
    static _VQMPolicy Full()
    {
        _VQMPolicy policy;
        policy.bError = false;
        policy.nCheckPeriod = 1;
        policy.nProjectID = 2;
        policy.strVersion = "version";
        policy.nItemCount = 3;
        policy.nTotalSize = 4;
        policy.stExpiration = {5, 6, 7, 8, 9, 10, 11};
        policy.listSchedule = {{{1, 1, 1, 1, 1, 1, 1}, {2, 2, 2, 2, 2, 2, 2}, {{"a", "b", 12, "c", 13}, {}}}, {}};
        policy.IsMaster = true;
        policy.NumOfPlayer = 14;
        policy.IPAddrOfMaster = "master";
        policy.IPType = 15;
        policy.IPAddr = "player";
        policy.SubnetMask = "mask";
        policy.Gateway = "gateway";
        policy.TypeOfNetwork = 16;
        policy.WirelessGroupName = "group";
        policy.nImageDuration = 17;
        return policy;
    }
};

const Lines kFull = {"bError=0",
                     "nCheckPeriod=1",
                     "nProjectID=2",
                     "strVersion=version",
                     "nItemCount=3",
                     "nTotalSize=4",
                     "stExpiration=5-6-7 8:9:10 11",
                     "IsMaster=1",
                     "NumOfPlayer=14",
                     "IPAddrOfMaster=master",
                     "IPType=15",
                     "IPAddr=player",
                     "SubnetMask=mask",
                     "Gateway=gateway",
                     "TypeOfNetwork=16",
                     "WirelessGroupName=group",
                     "nImageDuration=17",
                     "schedule 1-1-1 1:1:1 1 to 2-2-2 2:2:2 2",
                     "item a|b|12|c|13",
                     "item ||0||0",
                     "schedule 0-0-0 0:0:0 0 to 0-0-0 0:0:0 0"};

} // namespace

TEST_F(SchedulePolicy, FieldsLieInTheirOrder)
{
    const _VQMPolicy policy;
    const _VQMSchdule schedule;
    const _VQMContentInfo item;
    const std::vector<std::vector<const void*>> records = {
        {&policy, &policy.bError, &policy.nCheckPeriod, &policy.nProjectID, &policy.strVersion, &policy.nItemCount,
         &policy.nTotalSize, &policy.stExpiration, &policy.listSchedule, &policy.IsMaster, &policy.NumOfPlayer,
         &policy.IPAddrOfMaster, &policy.IPType, &policy.IPAddr, &policy.SubnetMask, &policy.Gateway,
         &policy.TypeOfNetwork, &policy.WirelessGroupName, &policy.nImageDuration},
        {&schedule, &schedule.stStartTime, &schedule.stEndTime, &schedule.listContents},
        {&item, &item.strID, &item.strName, &item.nSize, &item.strFormat, &item.nOrder},
    };
    for (const auto& fields : records) {
        EXPECT_TRUE(std::is_sorted(fields.begin(), fields.end()));
        EXPECT_EQ(fields[0], fields[1]);
    }
}

TEST_F(SchedulePolicy, ContainersMembersLieInTheirOrderAndStartEmpty)
{
    const std::vector<const void*> members = {&Inner<_VQMPolicy>(), &Inner<int>(), &Inner<_VQMSchdule>(),
                                              &Inner<_VQMContentInfo>()};
    EXPECT_TRUE(std::is_sorted(members.begin(), members.end()));
    EXPECT_EQ(members.front(),
              reinterpret_cast<const char*>(&container) + std::max(sizeof(void*), alignof(_VQMPolicy)));
    EXPECT_TRUE(Inner<_VQMPolicy>().bError);
    EXPECT_THAT(Changes(Inner<_VQMPolicy>()), IsEmpty());
    EXPECT_EQ(Inner<int>(), 0);
    EXPECT_TRUE(Inner<_VQMSchdule>().listContents.empty());
    EXPECT_EQ(Inner<_VQMContentInfo>().strID + Inner<_VQMContentInfo>().strName + Inner<_VQMContentInfo>().strFormat,
              "");
}

TEST_F(SchedulePolicy, ContainersOperationsLieInTheirOrder)
{
    EXPECT_EQ(VirtualSlot(&CVQMScheduleContainer::GetSturcture), 2U) << "the destructor takes 0 and 1";
    EXPECT_EQ(VirtualSlot(&CVQMScheduleContainer::SetStructure), 3U);
    EXPECT_EQ(VirtualSlot(&CVQMScheduleContainer::WriteTo), 4U);
    EXPECT_EQ(VirtualSlot(&CVQMScheduleContainer::ReadFrom), 5U);
    EXPECT_EQ(VirtualSlot(&OneMoreOperation::Last), 6U);
}

TEST_F(SchedulePolicy, TheElementStateSaysWhichTextIsOpen)
{
    const struct {
        const char* name;
        int state;
    } cases[] = {{"name", 1}, {"size", 2}, {"format", 3}};
    for (const auto& expected : cases) {
        Start(expected.name);
        EXPECT_EQ(Inner<int>(), expected.state);
        End(expected.name);
        EXPECT_EQ(Inner<int>(), 0);
        Start(expected.name);
        End("item");
        EXPECT_EQ(Inner<int>(), 0);
    }
}

TEST_F(SchedulePolicy, ACopyHasEveryFieldAndIsSeparate)
{
    _VQMPolicy source = Full();
    _VQMPolicy target;
    target.listSchedule.resize(7);
    target.listSchedule.front().listContents.resize(3);
    target.strVersion = "a longer text than the source's version";
    container.CopyPolicyMember(&source, &target);
    EXPECT_EQ(Changes(target), kFull);
    EXPECT_EQ(Changes(source), kFull);
    EXPECT_THAT(Changes(Policy()), IsEmpty()) << "the container's own policy has no part in it";

    source.listSchedule.front().listContents.front().strName = "other";
    source.listSchedule.pop_back();
    source.IPAddr = "other";
    EXPECT_EQ(Changes(target), kFull);
    EXPECT_THAT(Take(), IsEmpty());
}

TEST_F(SchedulePolicy, ACopyOntoItselfChangesNothing)
{
    _VQMPolicy policy = Full();
    container.CopyPolicyMember(&policy, &policy);
    EXPECT_EQ(Changes(policy), kFull);
}

TEST_F(SchedulePolicy, ACopyOfNothingIsEmpty)
{
    _VQMPolicy target = Full();
    _VQMPolicy empty;
    container.CopyPolicyMember(&empty, &target);
    EXPECT_THAT(Changes(target), IsEmpty());
}

TEST_F(SchedulePolicy, NullPointersAreLoggedAndCopyNothing)
{
    _VQMPolicy policy = Full();
    container.GetSturcture(nullptr);
    container.SetStructure(nullptr);
    container.CopyPolicyMember(nullptr, &policy);
    container.CopyPolicyMember(&policy, nullptr);
    container.CopyPolicyMember(nullptr, nullptr);
    const std::string copy =
        ScheduleLine("CopyPolicyMember", "CVQMScheduleContainer::CopyPolicyMember - Error pSource or pDest is Null \n");
    EXPECT_THAT(
        Take(),
        ElementsAre(
            ScheduleLine("GetSturcture", "CVQMScheduleContainer::GetSturcture - Error structure pointer null\n"),
            ScheduleLine("SetStructure", "CVQMScheduleContainer::SetStructure - Error structure pointer null\n"), copy,
            copy, copy));
    EXPECT_EQ(Changes(policy), kFull);
    EXPECT_THAT(Changes(Policy()), IsEmpty());
}

TEST_F(SchedulePolicy, SetAndGetCopyThePolicyAndKeepOpenElements)
{
    Start("schedule", {"start_time", "09:00:00", "end_time", "18:30:00"});
    Start("item", {"id", "first"});
    End("item");
    Start("item", {"id", "open"});
    Start("name");
    Take();
    _VQMPolicy policy = Full();
    container.SetStructure(&policy);
    EXPECT_EQ(Changes(Policy()), kFull);
    EXPECT_THAT(Take(), IsEmpty());
    EXPECT_EQ(Inner<int>(), 1);
    EXPECT_EQ(Inner<_VQMContentInfo>().strID, "open");
    EXPECT_EQ(Inner<_VQMSchdule>().listContents.size(), 1U);

    Piece("clip");
    End("item");
    End("schedule");
    Lines expected = kFull;
    expected.insert(expected.end(),
                    {"schedule 0-0-0 9:0:0 0 to 0-0-0 18:30:0 0", "item first||0||0", "item open|clip|0||0"});
    EXPECT_EQ(Changes(Policy()), expected);
    EXPECT_EQ(Changes(policy), kFull) << "what went in stays the caller's";
}

TEST_F(SchedulePolicy, WritingProducesNothing)
{
    CVQMXMLSerialize serializer;
    EXPECT_FALSE(container.WriteTo(&serializer));
    EXPECT_FALSE(container.WriteTo(nullptr));
    EXPECT_THAT(Take(), IsEmpty());
}
