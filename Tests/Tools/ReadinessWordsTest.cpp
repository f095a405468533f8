#include <gmock/gmock.h>

#include "Tools/Readiness/Words.h"

namespace {

TEST(ReadinessWords, BytesAreExactUpToAThousandAndRoundedBeyond)
{
    const std::pair<uVQMINT64, const char*> kCases[] = {
        {0, "0 bytes"},       {1, "1 byte"},      {999, "999 bytes"},     {1000, "1.0 kB"},
        {999949, "999.9 kB"}, {999950, "1.0 MB"}, {1073740800, "1.1 GB"}, {18446744073709551615U, "18.4 EB"},
    };
    for (const auto& [bytes, text] : kCases) {
        EXPECT_EQ(readiness::BytesText(bytes), text) << bytes;
    }
}

TEST(ReadinessWords, NamesAreListedAsInASentence)
{
    EXPECT_EQ(readiness::QuotedList({}), "");
    EXPECT_EQ(readiness::QuotedList({"a"}), "'a'");
    EXPECT_EQ(readiness::QuotedList({"a", "b"}), "'a' and 'b'");
    EXPECT_EQ(readiness::QuotedList({"a", "b", "c"}), "'a', 'b' and 'c'");
}

} // namespace
