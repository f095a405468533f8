#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

#include <gtest/gtest.h>

#include "Tests/Diagnostics/Lint/Documents.h"
#include "Tests/Fuzz/LintAgreement.h"
#include "Tests/Support/Recorder.h"

namespace {

std::string Read(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST(LintAgreement, HoldsOverTheDocumentation)
{
    for (const RuleSection& section : RuleSections()) {
        EXPECT_EQ(FindDisagreement(section.bad), "") << section.name;
        EXPECT_EQ(FindDisagreement(section.good), "") << section.name;
    }
    recorder::Clear();
}

/// An error says that the TV will not do what is written: without its rule the difference shows.
TEST(LintAgreement, NeedsTheRuleOfEachError)
{
    // The TV reads these as they are written, and then cannot act on them.
    const std::set<std::string> readAsWritten = {"start-not-before-end", "impossible-date"};
    for (const RuleSection& section : RuleSections()) {
        if (section.severity != "error" || section.name == "too-large" || readAsWritten.count(section.name) != 0) {
            continue;
        }
        std::set<lint::Rule> ignored = {*lint::FindRule(section.name)};
        if (section.name == "state-not-first" || section.name == "attribute-beyond-slots") {
            ignored.insert(lint::Rule::kUnknownAttribute);
        }
        EXPECT_NE(FindDisagreement(section.bad, ignored), "") << section.name;
    }
    recorder::Clear();
}

/// Changes that a person or a program makes, in place of a fuzzer.
TEST(LintAgreement, HoldsOverSmallChanges)
{
    static const std::vector<std::string> kTokens = {"0",
                                                     "1",
                                                     "9",
                                                     ":",
                                                     "-",
                                                     "/",
                                                     ".",
                                                     " ",
                                                     "\n",
                                                     "'",
                                                     "<",
                                                     ">",
                                                     "<!---->",
                                                     "&#49;",
                                                     "&amp;",
                                                     "<![CDATA[1]]>",
                                                     "]]",
                                                     "\r",
                                                     "<name>",
                                                     "</name>",
                                                     "<size>",
                                                     "</size>",
                                                     "<format>x</format>",
                                                     "<item>",
                                                     "</item>",
                                                     "<schedule>",
                                                     "</schedule>",
                                                     "<policy period='5'/>",
                                                     "state='ok'",
                                                     "id='2'",
                                                     "<?p?>",
                                                     "ä",
                                                     "18446744073709551616"};
    std::vector<std::string> documents;
    for (const auto& entry : std::filesystem::directory_iterator(VQM_LINT_CORPUS)) {
        const std::string document = Read(entry.path());
        if (IsClean(document)) {
            documents.push_back(document);
        }
    }
    std::sort(documents.begin(), documents.end());
    std::mt19937 random(11); // NOLINT: the same changes each time
    int clean = 0;
    for (int round = 0; round < 5000; ++round) {
        std::string document = documents[random() % documents.size()];
        for (int change = 0; change <= round % 2; ++change) {
            const std::size_t place = random() % (document.size() + 1);
            const std::string& token = kTokens[random() % kTokens.size()];
            if (random() % 3 == 0) {
                document.erase(place, 1 + random() % 6);
            } else {
                document.replace(place, random() % 2, token);
            }
        }
        clean += IsClean(document) ? 1 : 0;
        ASSERT_EQ(FindDisagreement(document), "") << document;
        recorder::Clear();
    }
    EXPECT_GT(clean, 100);
}

} // namespace
