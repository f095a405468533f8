#include <gmock/gmock.h>

#include "Diagnostics/Readiness/Readiness.h"
#include "Diagnostics/Text/Words.h"

namespace {

TEST(ReadinessWords, BytesAreExactUpToAThousandAndRoundedBeyond)
{
    const std::pair<uVQMINT64, const char*> kCases[] = {
        {0, "0 bytes"},       {1, "1 byte"},      {999, "999 bytes"},     {1000, "1.0 kB"},
        {999949, "999.9 kB"}, {999950, "1.0 MB"}, {1073740800, "1.1 GB"}, {18446744073709551615U, "18.4 EB"},
    };
    for (const auto& [bytes, text] : kCases) {
        EXPECT_EQ(BytesText(bytes), text) << bytes;
    }
}

TEST(ReadinessWords, NamesAreListedAsInASentence)
{
    EXPECT_EQ(QuotedList({}), "");
    EXPECT_EQ(QuotedList({"a"}), "'a'");
    EXPECT_EQ(QuotedList({"a", "b"}), "'a' and 'b'");
    EXPECT_EQ(QuotedList({"a", "b", "c"}), "'a', 'b' and 'c'");
}

TEST(ReadinessDiagnostics, ChangeAfterTheCheckDoesNotBlock)
{
    readiness::Report report;
    report.constants = {"constants.xml", readiness::DocumentState::kLoaded, "", {{"ScheduleFile", "s.xml"}}};
    report.verdict = {true, "", true, true};
    report.schedule.directory = "/d/";
    report.schedule.path = "/d/s.xml";
    report.schedule.state = readiness::DocumentState::kLoaded;
    report.schedule.policy.bError = false;
    report.contents.directoryPresent = true;
    readiness::ContentFile gone;
    gone.name = "a.mp4";
    gone.problem = "is missing";
    report.contents.files = {gone};
    report.contents.items = {{0, 0, 5}};

    const auto diagnostics = [&report] {
        std::vector<std::pair<std::string, bool>> told;
        for (const Diagnostic& diagnostic : readiness::Explain(report)) {
            told.emplace_back(diagnostic.id, diagnostic.blocking);
        }
        return told;
    };
    using testing::ElementsAre;
    using testing::Pair;
    EXPECT_THAT(diagnostics(), ElementsAre(Pair("file-missing", false), Pair("changed-meanwhile", false)));
    report.verdict.haveContents = false;
    EXPECT_THAT(diagnostics(), ElementsAre(Pair("file-missing", true)));
    report.contents.complete = 1;
    report.contents.files.front().size = 5;
    report.contents.files.front().readable = true;
    EXPECT_THAT(diagnostics(), ElementsAre(Pair("changed-meanwhile", false)));
    report.verdict.haveSchedule = false;
    EXPECT_THAT(diagnostics(), ElementsAre(Pair("changed-meanwhile", false)));
}

} // namespace
