#include <cstring>
#include <new>

#include <dlog.h>
#include <gmock/gmock.h>

#include "Data/VQMScheduleContainer.h"
#include "Tests/Platform/AllocationFault.h"
#include "VQMSerialize/VQMXMLSerialize.h"

namespace {
const char* lastFormat = "";
} // namespace

/// Keeps the last message and allocates nothing: what fails here is the product's.
int dlog_print(log_priority /*prio*/, const char* /*tag*/, const char* fmt, ...)
{
    lastFormat = fmt;
    return 0;
}

namespace {

// Texts too long for a string object's own room.
constexpr char kDocument[] =
    "<rsp state='ok'><project id='1' version='a version that takes its own memory' expiration='2016-12-31'/>"
    "<schedule start_time='09:00:00' end_time='18:30:00'>"
    "<item id='an id that takes its own memory' order='1'><name>a file name that takes its own memory</name>"
    "<size>5</size><format>mp4</format></item>"
    "<item id='A2' order='2'><name>logo</name><size>7</size><format>jpg</format></item></schedule>"
    "<rech_info IsMaster='1' IPAddrOfMaster='an address that takes its own memory' "
    "WirelessGroupName='a group name that takes its own memory'/></rsp>";

struct OpenSerializer : CVQMXMLSerialize {
    using CVQMXMLSerialize::m_pParser;
};

enum class Outcome { Read, Failed, Thrown };

Outcome Read(CVQMScheduleContainer& container)
{
    OpenSerializer serializer;
    EXPECT_TRUE(serializer.Create());
    Outcome outcome = Outcome::Thrown;
    try {
        outcome = serializer.Deserialize(kDocument, &container) ? Outcome::Read : Outcome::Failed;
    } catch (const std::bad_alloc&) {
        lastFormat = "";
    }
    allocation_fault::FailNth(0);
    EXPECT_EQ(serializer.m_pParser, nullptr);
    return outcome;
}

} // namespace

// Every allocation fails in turn, until the document gets through. A text that cannot be copied
// fails the parse; memory that the container lacks comes out as the exception that it is.
TEST(XMLSerializeMemory, ExhaustionAtAnyPointLeavesEverythingUsable)
{
    int failed = 0;
    int thrown = 0;
    for (std::size_t n = 1; n < 10000; ++n) {
        CVQMScheduleContainer container;
        allocation_fault::FailNth(n);
        switch (Read(container)) {
        case Outcome::Read: {
            EXPECT_GT(failed, 0);
            EXPECT_GT(thrown, 5);
            _VQMPolicy policy;
            container.GetSturcture(&policy);
            ASSERT_EQ(policy.listSchedule.size(), 1U);
            EXPECT_EQ(policy.listSchedule.front().listContents.size(), 2U);
            return;
        }
        case Outcome::Failed:
            ++failed;
            EXPECT_NE(std::strstr(lastFormat, "  PraseError !!!!\n"), nullptr) << lastFormat;
            break;
        case Outcome::Thrown:
            ++thrown;
            break;
        }
        _VQMPolicy policy;
        container.GetSturcture(&policy);
        EXPECT_LE(policy.listSchedule.size(), 1U);
        EXPECT_EQ(Read(container), Outcome::Read) << "the next document, after allocation " << n;
    }
    ADD_FAILURE() << "no document got through";
}
