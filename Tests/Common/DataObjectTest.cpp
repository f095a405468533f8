#include "Common/VQMDataObject.h"

#include <clocale>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <string>
#include <type_traits>

#include <unistd.h>

#include <gmock/gmock.h>

#include "Tests/Support/VirtualSlot.h"

namespace {

static_assert(sizeof(uVQMINT64) == 8 && std::is_unsigned_v<uVQMINT64>);
static_assert(std::has_virtual_destructor_v<CVQMDataObject>);
static_assert(std::is_base_of_v<CVQMDataObject, CVQMDataStructureObject>);
static_assert(std::is_base_of_v<CVQMDataStructureObject, CVQMDataSerializableObject>);
static_assert(std::is_base_of_v<CVQMDataObject, CVQMDataBufferObject>);
static_assert(!std::is_base_of_v<CVQMDataStructureObject, CVQMDataBufferObject>);
static_assert(std::is_abstract_v<CVQMDataStructureObject> && std::is_abstract_v<CVQMDataSerializableObject>);
// They have no data but the pointer to the virtual operations.
static_assert(sizeof(CVQMDataObject) == sizeof(void*));
static_assert(sizeof(CVQMDataStructureObject) == sizeof(void*));
static_assert(sizeof(CVQMDataSerializableObject) == sizeof(void*));

template <typename Base>
struct OneMoreOperation : Base {
    virtual void Last() {}
};

constexpr uVQMINT64 kMaximum = std::numeric_limits<uVQMINT64>::max();

int ToInt(const char* text)
{
    CVQMDataObject object;
    int number = 77; // every text replaces it
    object.StrToNumber(text, number);
    return number;
}

uVQMINT64 ToUnsigned(const char* text)
{
    CVQMDataObject object;
    uVQMINT64 number = 77;
    object.StrToNumber(text, number);
    return number;
}

double ToDouble(const char* text)
{
    CVQMDataObject object;
    double number = 77;
    object.StrToNumber(text, number);
    return number;
}

std::string DoubleText(double number)
{
    CVQMDataObject object;
    std::string text = "something longer than the result, to be replaced and not appended to";
    object.NumberToStr(number, text);
    return text;
}

} // namespace

TEST(DataObjects, OperationsLieInTheirOrder)
{
    // The destructor comes first and takes two places.
    EXPECT_EQ(VirtualSlot(&OneMoreOperation<CVQMDataObject>::Last), 2U);
    EXPECT_EQ(VirtualSlot(&OneMoreOperation<CVQMDataBufferObject>::Last), 2U);
    EXPECT_EQ(VirtualSlot(&CVQMDataStructureObject::GetSturcture), 2U);
    EXPECT_EQ(VirtualSlot(&CVQMDataStructureObject::SetStructure), 3U);
    EXPECT_EQ(VirtualSlot(&OneMoreOperation<CVQMDataStructureObject>::Last), 4U);
    EXPECT_EQ(VirtualSlot(&CVQMDataSerializableObject::GetSturcture), 2U);
    EXPECT_EQ(VirtualSlot(&CVQMDataSerializableObject::SetStructure), 3U);
    EXPECT_EQ(VirtualSlot(&CVQMDataSerializableObject::WriteTo), 4U);
    EXPECT_EQ(VirtualSlot(&CVQMDataSerializableObject::ReadFrom), 5U);
    EXPECT_EQ(VirtualSlot(&OneMoreOperation<CVQMDataSerializableObject>::Last), 6U);
}

TEST(TextToInt, LongestPrefixCounts)
{
    const struct {
        const char* text;
        int number;
    } cases[] = {
        {"", 0},      {"-", 0},    {"-0", 0},    {"007", 7},  {"42abc", 42}, {"-7", -7},   {"-x", 0},    {"--5", 0},
        {"- 5", 0},   {"+5", 0},   {" 5", 0},    {"\t5", 0},  {"x5", 0},     {"12-3", 12}, {"12+3", 12}, {"12 3", 12},
        {"12.9", 12}, {"0x1F", 0}, {"9\xff", 9}, {"\xff", 0}, {"0", 0},      {"9", 9},     {"1/", 1},    {"1:", 1},
    };
    for (const auto& expected : cases) {
        EXPECT_EQ(ToInt(expected.text), expected.number) << '"' << expected.text << '"';
    }
}

TEST(TextToInt, OverflowWrapsIn32Bits)
{
    EXPECT_EQ(ToInt("2147483647"), 2147483647);
    EXPECT_EQ(ToInt("2147483648"), -2147483647 - 1);
    EXPECT_EQ(ToInt("-2147483648"), -2147483647 - 1);
    EXPECT_EQ(ToInt("-2147483649"), 2147483647);
    EXPECT_EQ(ToInt("4294967296"), 0);
    EXPECT_EQ(ToInt("-4294967297"), -1);
    EXPECT_EQ(ToInt("99999999999999999999"), 1661992959); // modulo 2^32, not a limit
}

TEST(TextToUnsigned, LongestPrefixWithoutSignCounts)
{
    const struct {
        const char* text;
        uVQMINT64 number;
    } cases[] = {
        {"", 0},
        {"-1", 0},
        {"-5", 0},
        {"+5", 0},
        {" 5", 0},
        {"0", 0},
        {"0010", 10},
        {"12MB", 12},
        {"abc", 0},
        {"12-3", 12},
        {"4294967296", 4294967296ULL},
        {"18446744073709551615", kMaximum},
        {"18446744073709551616", 0},
        {"18446744073709551617", 1},
    };
    for (const auto& expected : cases) {
        EXPECT_EQ(ToUnsigned(expected.text), expected.number) << '"' << expected.text << '"';
    }
}

TEST(TextToDouble, LongestPrefixCounts)
{
    const struct {
        const char* text;
        double number;
    } cases[] = {
        {"", 0.0},       {"3.25", 3.25}, {"-0.5", -0.5}, {".5", 0.5},   {"5.", 5.0},  {"1.5.5", 1.1},
        {"2e2", 2.0},    {"1e3", 1.0},   {"abc", 0.0},   {"+5", 0.0},   {" 5", 0.0},  {"--5", 0.0},
        {"-.5", -0.5},   {".", 0.0},     {"..5", 0.5},   {"1..5", 1.5}, {"1,5", 1.0}, {"1.5,5", 1.5},
        {"1.5x.5", 1.5}, {"inf", 0.0},   {"nan", 0.0},   {"0x10", 0.0}, {"-3", -3.0}, {"1.5-", 1.5},
    };
    for (const auto& expected : cases) {
        EXPECT_EQ(ToDouble(expected.text), expected.number) << '"' << expected.text << '"';
    }
}

TEST(TextToDouble, LoneMinusIsNegativeZero)
{
    for (const char* text : {"-", "-x", "-0", "-.", "-0.0"}) {
        EXPECT_EQ(ToDouble(text), 0.0) << text;
        EXPECT_TRUE(std::signbit(ToDouble(text))) << text;
    }
    EXPECT_FALSE(std::signbit(ToDouble("")));
    EXPECT_FALSE(std::signbit(ToDouble("0")));
}

// The expected bits were computed with exact arithmetic, rounded once per step: the integer step as
// one operation, the fraction step as two. Each text gives other bits when a step is fused that
// should not be, or the other way round.
TEST(TextToDouble, BitsAreTheSameOnEveryTarget)
{
    const struct {
        const char* text;
        double number;
    } cases[] = {
        {"0.09754046234894452881", 0x1.8f86967d34fcep-4},
        {"0.581107446723587876", 0x1.2986ea4e479dcp-1},
        {"1599825966637476629944.460547427019734026", 0x1.5ae82e61a982fp+70},
        {"2193081614099169206159.755024298488934183", 0x1.db8c7c3250b53p+70},
        {"2772040560865690702.31375858471954061358", 0x1.33c221a02afe3p+61},
        {"3.843431178610089074", 0x1.ebf58d88474e2p+1},
        {"3.888977657022230360", 0x1.f1ca0515e4810p+1},
        {"3.90763", 0x1.f42d38476f2a6p+1},
        {"4.61996", 0x1.27ad6cb53500ap+2},
    };
    for (const auto& expected : cases) {
        EXPECT_EQ(ToDouble(expected.text), expected.number) << '"' << expected.text << '"';
    }
}

TEST(TextToNumberDeathTest, NullTextStopsTheProcess)
{
    EXPECT_EXIT(ToInt(nullptr), testing::KilledBySignal(SIGABRT),
                R"(void CVQMDataObject::StrToNumber\(const char\*, int&\): Assertion `pStr!=__null' failed)");
    EXPECT_EXIT(ToUnsigned(nullptr), testing::KilledBySignal(SIGABRT),
                R"(void CVQMDataObject::StrToNumber\(const char\*, uVQMINT64&\): Assertion `pStr!=__null' failed)");
    EXPECT_EXIT(ToDouble(nullptr), testing::KilledBySignal(SIGABRT),
                R"(void CVQMDataObject::StrToNumber\(const char\*, double&\): Assertion `pStr!=__null' failed)");
}

TEST(NumberToText, IntegersReplaceTheText)
{
    CVQMDataObject object;
    std::string text = "old";
    int number = -2147483647 - 1;
    object.NumberToStr(number, text);
    EXPECT_EQ(text, "-2147483648");
    EXPECT_EQ(number, -2147483647 - 1);
    number = 0;
    object.NumberToStr(number, text);
    EXPECT_EQ(text, "0");
    uVQMINT64 large = kMaximum;
    object.NumberToStr(large, text);
    EXPECT_EQ(text, "18446744073709551615");
    EXPECT_EQ(large, kMaximum);
}

TEST(NumberToText, HexadecimalHasEightUpperCaseDigits)
{
    const struct {
        int number;
        const char* text;
    } cases[] = {{-1, "FFFFFFFF"}, {255, "000000FF"}, {0, "00000000"}, {0x0abcdef1, "0ABCDEF1"}};
    CVQMDataObject object;
    for (const auto& expected : cases) {
        std::string text = "old";
        int number = expected.number;
        object.NumberToHexStr(number, text);
        EXPECT_EQ(text, expected.text);
        EXPECT_EQ(number, expected.number);
    }
}

TEST(NumberToText, DoublesHaveSixDecimals)
{
    EXPECT_EQ(DoubleText(1.5), "1.500000");
    EXPECT_EQ(DoubleText(-0.0), "-0.000000");
    EXPECT_EQ(DoubleText(0.0000005), "0.000000"); // its nearest double is below one half
    EXPECT_EQ(DoubleText(0.0000015), "0.000002");
    EXPECT_EQ(DoubleText(2.0 / 3), "0.666667");
    EXPECT_EQ(DoubleText(1e22), "10000000000000000000000.000000");
    EXPECT_EQ(DoubleText(std::numeric_limits<double>::infinity()), "inf");
    EXPECT_EQ(DoubleText(-std::numeric_limits<double>::infinity()), "-inf");
    EXPECT_EQ(DoubleText(std::numeric_limits<double>::quiet_NaN()), "nan");
}

TEST(NumberToText, LongNumbersAreCutAt253Characters)
{
    char exact[400];
    for (const double number :
         {std::numeric_limits<double>::max(), -std::numeric_limits<double>::max(), 1e245, 1e246}) {
        std::snprintf(exact, sizeof exact, "%f", number); // the locale is "C" here
        EXPECT_EQ(DoubleText(number), std::string(exact).substr(0, 253)) << number;
    }
    EXPECT_EQ(DoubleText(1e245).size(), 253U);
    EXPECT_EQ(DoubleText(-std::numeric_limits<double>::max()).size(), 253U);
}

TEST(NumberToText, DecimalPointIsADotInEveryLocale)
{
    // A custom locale, derived from the plainest one: machines often have no other.
    const std::filesystem::path root = testing::TempDir() + "locale." + std::to_string(getpid());
    std::filesystem::create_directories(root / "comma");
    std::ifstream from("/usr/lib/locale/C.utf8/LC_NUMERIC", std::ios::binary);
    std::string numeric{std::istreambuf_iterator<char>(from), {}};
    const std::size_t point = numeric.find(std::string(".\0", 2));
    ASSERT_NE(point, std::string::npos);
    numeric[point] = ',';
    std::ofstream(root / "comma" / "LC_NUMERIC", std::ios::binary) << numeric;
    setenv("LOCPATH", root.c_str(), 1);
    const bool entered = std::setlocale(LC_NUMERIC, "comma") != nullptr;
    char printed[16];
    std::snprintf(printed, sizeof printed, "%.1f", 1.5);
    const std::string text = DoubleText(1.5);
    const double number = ToDouble("1.5");
    std::setlocale(LC_NUMERIC, "C");
    unsetenv("LOCPATH");
    std::filesystem::remove_all(root);

    ASSERT_TRUE(entered);
    ASSERT_STREQ(printed, "1,5");
    EXPECT_EQ(text, "1.500000");
    EXPECT_EQ(number, 1.5);
}
