#include <algorithm>

#include <gmock/gmock.h>

#include "Diagnostics/Lint/Render.h"
#include "Tests/Diagnostics/Lint/Documents.h"

namespace {

using testing::ElementsAreArray;

lint::Options OptionsOf(const RuleSection& section)
{
    lint::Options options = TestOptions();
    if (section.name == "too-large") {
        options.maxBytes = 220;
    }
    return options;
}

TEST(LintDocumentation, HasASectionForEachRule)
{
    std::vector<std::string> names;
    for (const RuleSection& section : RuleSections()) {
        names.push_back(section.name);
    }
    EXPECT_THAT(names, ElementsAreArray(lint::RuleNames()));
}

TEST(LintDocumentation, NamesTheSeverities)
{
    for (const RuleSection& section : RuleSections()) {
        EXPECT_EQ(section.severity, NameOf(lint::SeverityOf(*lint::FindRule(section.name)))) << section.name;
    }
}

TEST(LintDocumentation, ShowsWhatIsSaidOfTheBadExampleCharacterForCharacter)
{
    for (const RuleSection& section : RuleSections()) {
        const lint::Report report = lint::Lint(section.bad, OptionsOf(section));
        EXPECT_EQ(lint::Render({"schedule.xml", "", report}), section.output) << section.name;
        EXPECT_TRUE(std::any_of(report.findings.begin(), report.findings.end(), [&](const Diagnostic& finding) {
            return finding.id == section.name;
        })) << section.name;
    }
}

TEST(LintDocumentation, HasGoodExamplesWithNothingToSayAbout)
{
    for (const RuleSection& section : RuleSections()) {
        ASSERT_FALSE(section.good.empty()) << section.name;
        EXPECT_EQ(lint::RenderOneline({"schedule.xml", "", lint::Lint(section.good, OptionsOf(section))}), "")
            << section.name;
    }
}

TEST(LintDocumentation, ShowsWhatIgnoringARuleLeavesOut)
{
    for (const RuleSection& section : RuleSections()) {
        lint::Options options = OptionsOf(section);
        options.ignored.insert(*lint::FindRule(section.name));
        const lint::Report report = lint::Lint(section.bad, options);
        for (const Diagnostic& finding : report.findings) {
            EXPECT_NE(finding.id, section.name);
        }
    }
}

} // namespace
