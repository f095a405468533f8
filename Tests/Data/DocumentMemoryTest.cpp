#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "Tests/Data/ConstantsFixture.h"
#include "Tests/Data/ScheduleFixture.h"
#include "Tests/Support/Descriptors.h"
#include "Tests/Support/EachAllocation.h"
#include "Tests/VQMSerialize/ParserFault.h"

// Every allocation of reading and copying fails in turn. What is left is a beginning of the
// document or the records as they were, each value whole; nothing leaks, and the next attempt works.

using recorder::Lines;

namespace {

// Texts too long for a string object's own room.
constexpr char kSchedule[] =
    "<!DOCTYPE rsp [<!ENTITY e 'an entity that takes its own memory'>]>"
    "<rsp state='ok'><policy period='30'/><project id='1' version='a version that takes its own memory' "
    "total_size='5' expiration='2016-12-31T10:00:00.000'/>"
    "<schedule start_time='09:00:00' end_time='00000000000000000018:30:00'>"
    "<item id='an id that takes its own memory' order='1'><name>a file name &e;</name>"
    "<size>5</size><format>a format that takes its own memory</format></item>"
    "<item id='A2' order='2'><name>logo</name><size>7</size><format>jpg</format></item></schedule>"
    "<schedule><item id='another id that takes its own memory'/></schedule>"
    "<rech_info IsMaster='1' IPAddrOfMaster='an address that takes its own memory' "
    "WirelessGroupName='a group name that takes its own memory'/></rsp>";

constexpr char kConstants[] =
    "<!DOCTYPE c [<!ENTITY e 'an entity that takes its own memory'>]>"
    "<c>&e;<Data key='a key that takes its own memory' value='a value that takes its own memory'/>"
    "<Data key='short' value='1'/><Data key='entity' value='&e;'/>"
    "<Data key='before' value='a later value that takes its own memory'/></c>";

const std::map<std::string, std::string> kBefore = {{"before", "stays until it is replaced as a whole"}};
const std::map<std::string, std::string> kAfter = {
    {"a key that takes its own memory", "a value that takes its own memory"},
    {"before", "a later value that takes its own memory"},
    {"entity", "an entity that takes its own memory"},
    {"short", "1"}};

/// Whether all of `part` stands in `whole`, in its order.
bool IsPartOf(const Lines& part, const Lines& whole)
{
    auto next = whole.begin();
    for (const std::string& line : part) {
        next = std::find(next, whole.end(), line);
        if (next == whole.end()) {
            return false;
        }
        ++next;
    }
    return true;
}

_VQMPolicy PolicyOf(CVQMScheduleContainer& container)
{
    _VQMPolicy policy;
    container.GetSturcture(&policy);
    return policy;
}

bool Read(CVQMDataSerializableObject& target, const char* document)
{
    CVQMXMLSerialize serializer;
    return serializer.Create() && serializer.Deserialize(document, &target);
}

std::string SerializerLine(const std::string& function, const std::string& message)
{
    return recorder::LogOf("Quillmere", "VQMXMLSerialize.cpp").Debug(function, message);
}

/// A parse that is refused says so, in its last line.
void ExpectRefusalIsLogged()
{
    const Lines lines = recorder::Trace();
    ASSERT_FALSE(lines.empty());
    EXPECT_THAT(
        lines.back(),
        testing::AnyOf(SerializerLine("Deserialize", "  PraseError !!!!\n"),
                       SerializerLine("Deserialize", "CVQMXMLSerialize::Deserialize-  XML_GetBuffer Failed!!!!\n"),
                       SerializerLine("Create", " XML_ParserCreate is Failed!!!\n")));
}

class ScheduleMemory : public testing::Test {
protected:
    ScheduleMemory()
    {
        CVQMScheduleContainer container;
        EXPECT_TRUE(Read(container, kSchedule));
        whole = Changes(PolicyOf(container));
        recorder::Clear();
    }

    /// A round of `ForEachFault`.
    template <typename Run>
    void ReadUnderFault(Run run)
    {
        CVQMScheduleContainer container;
        const Outcome outcome = run([&] { return Read(container, kSchedule); });
        if (outcome == Outcome::Refused) {
            ExpectRefusalIsLogged();
        }
        _VQMPolicy policy = PolicyOf(container);
        EXPECT_TRUE(IsPartOf(Changes(policy), whole));
        // Schedules come whole or not at all.
        const std::size_t contents[] = {2, 1};
        ASSERT_LE(policy.listSchedule.size(), 2U);
        std::size_t index = 0;
        for (const _VQMSchdule& schedule : policy.listSchedule) {
            EXPECT_EQ(schedule.listContents.size(), contents[index++]);
            EXPECT_EQ(schedule.stEndTime.nHour, index == 1 ? 18 : 0);
        }
        if (outcome == Outcome::Done) {
            EXPECT_EQ(Changes(policy), whole);
        }
        CVQMScheduleContainer next;
        EXPECT_TRUE(Read(next, kSchedule));
        EXPECT_EQ(Changes(PolicyOf(next)), whole);
    }

    Lines whole;
};

class ConstantsMemory : public ConstantsTest {
protected:
    /// Each value is the old one or the new one.
    static void ExpectValuesAreWhole()
    {
        EXPECT_NE(OpenConstants::m_DataCache.count("before"), 0U);
        for (const auto& [key, value] : OpenConstants::m_DataCache) {
            const auto before = kBefore.find(key);
            const auto after = kAfter.find(key);
            ASSERT_NE(after, kAfter.end()) << key;
            EXPECT_TRUE(value == after->second || (before != kBefore.end() && value == before->second))
                << key << '=' << value;
        }
    }

    /// A round of `ForEachFault`.
    template <typename Run, typename Reading>
    static void ReadUnderFault(Run run, Reading reading)
    {
        OpenConstants::m_DataCache = kBefore;
        const Outcome outcome = run(reading);
        ExpectValuesAreWhole();
        if (outcome == Outcome::Done) {
            EXPECT_EQ(OpenConstants::m_DataCache, kAfter);
        }
        EXPECT_TRUE(reading()) << "the next attempt";
        EXPECT_EQ(OpenConstants::m_DataCache, kAfter);
        OpenConstants::m_DataCache.clear();
    }
};

} // namespace

TEST_F(ScheduleMemory, ExhaustionKeepsWhatWasReadBefore)
{
    const Outcomes outcomes = ForEachAllocation([this](auto run) { ReadUnderFault(run); });
    EXPECT_GT(outcomes.thrown, 10U) << "what the records lack comes out";
    EXPECT_GT(outcomes.refused, 0U) << "a text that cannot be copied ends the parse";
}

TEST_F(ScheduleMemory, ParserExhaustionKeepsWhatWasReadBefore)
{
    const Outcomes outcomes = ForEachParserAllocation([this](auto run) { ReadUnderFault(run); });
    EXPECT_GT(outcomes.refused, 10U);
    EXPECT_EQ(outcomes.thrown, 0U);
}

TEST_F(ScheduleMemory, FailedCopyLeavesTargetUnchanged)
{
    CVQMScheduleContainer other;
    ASSERT_TRUE(Read(other, "<rsp state='ok'><project version='an old version that takes its own memory'/>"
                            "<schedule><item id='an old id that takes its own memory'/><item/><item/></schedule>"
                            "<schedule/><schedule/><rech_info Gateway='an old gateway of its own'/></rsp>"));
    const Lines before = Changes(PolicyOf(other));
    _VQMPolicy old = PolicyOf(other);
    CVQMScheduleContainer container;
    ASSERT_TRUE(Read(container, kSchedule));
    _VQMPolicy policy = PolicyOf(container);

    const Outcomes out = ForEachAllocation([&](auto run) {
        _VQMPolicy target = old;
        const Outcome outcome = run([&] {
            container.GetSturcture(&target);
            return true;
        });
        EXPECT_EQ(Changes(target), outcome == Outcome::Done ? whole : before);
        EXPECT_EQ(Changes(PolicyOf(container)), whole);
    });
    EXPECT_GT(out.thrown, 5U);
    const Outcomes in = ForEachAllocation([&](auto run) {
        CVQMScheduleContainer target;
        target.SetStructure(&old);
        const Outcome outcome = run([&] {
            target.SetStructure(&policy);
            return true;
        });
        EXPECT_EQ(Changes(PolicyOf(target)), outcome == Outcome::Done ? whole : before);
        EXPECT_EQ(Changes(policy), whole);
    });
    EXPECT_EQ(in.thrown, out.thrown);
}

TEST_F(ConstantsMemory, ExhaustionKeepsOnlyWholeValues)
{
    const auto reading = [] {
        CVQMDataConstants constants;
        return Read(constants, kConstants);
    };
    const Outcomes outcomes = ForEachAllocation([&](auto run) { ReadUnderFault(run, reading); });
    EXPECT_GT(outcomes.thrown, 3U);
    const Outcomes parser = ForEachParserAllocation([&](auto run) { ReadUnderFault(run, reading); });
    EXPECT_GT(parser.refused, 10U);
    EXPECT_EQ(parser.thrown, 0U);
}

TEST_F(ConstantsMemory, ExhaustionWhileReadingClosesTheFile)
{
    std::string pattern = testing::TempDir() + "a directory with a name of some length-XXXXXX";
    const std::filesystem::path directory = mkdtemp(pattern.data());
    const std::string path = directory / "constants.xml";
    // Three steps of the pipe.
    std::ofstream(path) << std::string(kConstants) << std::string(25000, '\n');
    const std::size_t descriptors = OpenDescriptors();
    const auto round = [&](auto run) {
        ReadUnderFault(run, [&] { return CVQMDataConstants::Initialize(path); });
        EXPECT_EQ(OpenDescriptors(), descriptors);
    };
    const Outcomes outcomes = ForEachAllocation(round);
    EXPECT_GT(outcomes.refused, 3U) << "the pipe turns exceptions into refusals";
    EXPECT_GT(outcomes.thrown, 3U);
    const Outcomes parser = ForEachParserAllocation(round);
    EXPECT_GT(parser.refused, 10U);
    std::filesystem::remove_all(directory);
}

TEST_F(ConstantsMemory, FailedLookUpLeavesOutputUnchanged)
{
    for (const auto& [key, expected] : std::map<std::string, std::string>{
             {"entity", kAfter.at("entity")}, {"an unknown key that takes its own memory", ""}}) {
        ForEachAllocation([key = key, expected = expected](auto run) {
            OpenConstants::m_DataCache = kAfter;
            std::string value = "old";
            const Outcome outcome = run([&] {
                CVQMDataConstants::GetValue(key, value);
                return true;
            });
            EXPECT_EQ(value, outcome == Outcome::Done ? expected : "old");
            OpenConstants::m_DataCache.clear();
        });
    }
}
