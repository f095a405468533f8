#include <algorithm>
#include <cctype>
#include <memory>
#include <string>
#include <string_view>
#include <unistd.h>

#include "Diagnostics/Lint/Rule.h"
#include "Diagnostics/Lint/RuleText.h"
#include "Diagnostics/Readiness/FindingText.h"
#include "Diagnostics/Text/Style.h"
#include "Diagnostics/Text/Suggestions.h"
#include "Tools/CommandError.h"
#include "Tools/CommandLine.h"
#include "Tools/Commands/Commands.h"
#include "Tools/Terminal/HelpText.h"
#include "Tools/Terminal/Terminal.h"

namespace {

std::string Heading(const lint::RuleText& rule, const Style& style)
{
    const std::string name(rule.name);
    const Severity severity = lint::SeverityOf(*lint::FindRule(name));
    return style.Bold(name) + " (" + style.Paint(severity, NameOf(severity)) + ")";
}

std::string Heading(const readiness::FindingText& finding, const Style& style)
{
    return style.Bold(std::string(finding.id)) + " (check)";
}

/// A cell of the documentation's table, a clause with marks of Markdown, as a plain sentence.
std::string Sentence(std::string_view clause)
{
    std::string text(clause);
    text.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(text.front())));
    text.erase(std::remove(text.begin(), text.end(), '`'), text.end());
    return text + ".";
}

std::string ListText(const Style& style)
{
    std::string text;
    for (const lint::RuleText& rule : lint::RuleTexts()) {
        text += Heading(rule, style) + "\n" + WrappedHelp("    " + lint::FirstSentence(rule), HelpColumns());
    }
    for (const readiness::FindingText& finding : readiness::FindingTexts()) {
        text += Heading(finding, style) + "\n" + WrappedHelp("    " + Sentence(finding.meaning), HelpColumns());
    }
    return text + "\n'vqmctl explain FINDING' prints a rule's examples, or what to do.\n";
}

/// A rule of the linter and a finding of the check may have one name.
std::string ExplanationOf(const std::string& name, const Style& style)
{
    std::string text;
    for (const lint::RuleText& rule : lint::RuleTexts()) {
        if (rule.name == name) {
            text = Heading(rule, style) + "\n\n" + lint::PlainText(rule, HelpColumns());
        }
    }
    for (const readiness::FindingText& finding : readiness::FindingTexts()) {
        if (finding.id == name) {
            text += (text.empty() ? "" : "\n") + Heading(finding, style) + "\n\n" +
                    WrappedHelp(Sentence(finding.meaning) + "\n" + Sentence(finding.advice) + "\n", HelpColumns());
        }
    }
    return text;
}

std::vector<std::string> Names()
{
    std::vector<std::string> names = lint::RuleNames();
    for (const readiness::FindingText& finding : readiness::FindingTexts()) {
        names.emplace_back(finding.id);
    }
    return names;
}

ExitCode Explain(const std::string& name)
{
    const Style style(WantsColour(STDOUT_FILENO));
    const std::string text = name.empty() ? ListText(style) : ExplanationOf(name, style);
    if (!text.empty()) {
        static_cast<void>(Print(text));
        return ExitCode::kOk;
    }
    const std::vector<std::string> close = Suggest(name, Names());
    throw CommandError(ExitCode::kUsage,
                       "there is no rule or finding '" + name + "'; " +
                           (close.empty() ? "'vqmctl explain' lists them" : "did you mean " + JoinWithOr(close) + "?"));
}

} // namespace

void AddExplainCommand(CommandLine& line)
{
    const auto name = std::make_shared<std::string>();
    CLI::App& command =
        line.AddCommand("explain", "Explain a rule of the linter or a finding of the check, or list all",
                        [name] { return Explain(*name); });
    command.add_option("finding", *name, "The name that stands behind the finding")->type_name("FINDING");
}
