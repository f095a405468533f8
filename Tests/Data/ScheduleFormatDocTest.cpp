#include <fstream>
#include <iterator>
#include <string>

#include <gmock/gmock.h>

#include "Data/VQMScheduleContainer.h"
#include "VQMSerialize/VQMXMLSerialize.h"

TEST(ScheduleFormatDocument, ItsExampleParses)
{
    std::ifstream file(VQM_SCHEDULE_DOCUMENT);
    const std::string page{std::istreambuf_iterator<char>(file), {}};
    const std::string open = "```xml\n";
    const std::size_t begin = page.find(open);
    ASSERT_NE(begin, std::string::npos);
    const std::size_t end = page.find("```", begin + open.size());
    const std::string example = page.substr(begin + open.size(), end - begin - open.size());

    CVQMScheduleContainer container;
    CVQMXMLSerialize serializer;
    ASSERT_TRUE(serializer.Create());
    ASSERT_TRUE(serializer.Deserialize(example.c_str(), &container));
    _VQMPolicy policy;
    container.GetSturcture(&policy);
    EXPECT_FALSE(policy.bError);
    ASSERT_EQ(policy.listSchedule.size(), 1U);
    const auto& contents = policy.listSchedule.front().listContents;
    ASSERT_EQ(contents.size(), 2U);
    EXPECT_EQ(contents.front().strName, "intro.mp4");
    EXPECT_EQ(contents.back().strName, "logo.jpg");
    EXPECT_EQ(contents.front().nSize + contents.back().nSize, policy.nTotalSize);
    EXPECT_EQ(policy.nImageDuration, 10);
}
