#include <cstring>
#include <exception>
#include <limits>
#include <string>
#include <type_traits>

#include <gmock/gmock.h>

#include "Common/VQMDataObject.h"

namespace {

static_assert(!std::is_base_of_v<std::exception, CVQMException>);
static_assert(std::has_virtual_destructor_v<CVQMException>);

/// Long enough not to fit into the string object itself.
const std::string kMessage = "ofstream open Error : /opt/data/demo_movie/a long name.mp4";

} // namespace

TEST(Exception, KeepsCodeAndMessage)
{
    const CVQMException error(0x100005, kMessage);
    EXPECT_EQ(error.GetErrorCode(), 0x100005);
    EXPECT_EQ(error.GetErrorMsg(), kMessage);
    EXPECT_EQ(CVQMException(-1, "").GetErrorCode(), -1);
}

TEST(Exception, CopyKeepsCodeAndMessage)
{
    try {
        const CVQMException error(0x100006, kMessage);
        throw error; // NOLINT(misc-throw-by-value-catch-by-reference): the copy is what is tested
    } catch (const std::exception&) {
        FAIL();
    } catch (const CVQMException& error) {
        EXPECT_EQ(error.GetErrorCode(), 0x100006);
        EXPECT_EQ(error.GetErrorMsg(), kMessage);
    }
    CVQMException target(1, "other");
    target = CVQMException(0x100007, kMessage);
    EXPECT_EQ(target.GetErrorCode(), 0x100007);
    EXPECT_EQ(target.GetErrorMsg(), kMessage);
}

TEST(Exception, FieldsAreMessageThenCode)
{
    const CVQMException error(0x100001, kMessage);
    const char* const bytes = reinterpret_cast<const char*>(&error);
    int code = 0;
    std::memcpy(&code, bytes + sizeof(void*) + sizeof(std::string), sizeof code);
    EXPECT_EQ(code, 0x100001);
    const auto* const message = reinterpret_cast<const std::string*>(bytes + sizeof(void*));
    EXPECT_EQ(*message, kMessage);
}

TEST(Exception, SocketStatesOutsideTheTableAreNull)
{
    const char* const names[] = {"CONNECTED", "DISCONNECTED", "TIMEOUT", "SAME_IP_CLIENT"};
    for (int state = 0; state < 4; ++state) {
        EXPECT_STREQ(CVQMException::GetSocketStateMsg(state), names[state]);
        EXPECT_EQ(CVQMException::GetSocketStateMsg(state), SocketStateString[state]);
    }
    for (const int state : {4, -1, 5, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        EXPECT_EQ(CVQMException::GetSocketStateMsg(state), nullptr) << state;
    }
}
