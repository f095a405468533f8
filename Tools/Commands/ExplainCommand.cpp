#include <memory>
#include <string>
#include <unistd.h>

#include "Diagnostics/Lint/Rule.h"
#include "Diagnostics/Lint/RuleText.h"
#include "Diagnostics/Text/Style.h"
#include "Diagnostics/Text/Suggestions.h"
#include "Tools/CommandError.h"
#include "Tools/CommandLine.h"
#include "Tools/Commands/Commands.h"
#include "Tools/Terminal/HelpText.h"
#include "Tools/Terminal/Terminal.h"

namespace {

std::string Heading(const std::string& name, const Style& style)
{
    const Severity severity = lint::SeverityOf(*lint::FindRule(name));
    return style.Bold(name) + " (" + style.Paint(severity, NameOf(severity)) + ")";
}

std::string ListText(const Style& style)
{
    std::string text;
    for (const lint::RuleText& rule : lint::RuleTexts()) {
        text += Heading(std::string(rule.name), style) + "\n" +
                WrappedHelp("    " + lint::FirstSentence(rule), HelpColumns());
    }
    return text + "\n'vqmctl explain RULE' prints a rule's examples.\n";
}

ExitCode ExplainRule(const std::string& name)
{
    const Style style(WantsColour(STDOUT_FILENO));
    if (name.empty()) {
        static_cast<void>(Print(ListText(style)));
        return ExitCode::kOk;
    }
    for (const lint::RuleText& rule : lint::RuleTexts()) {
        if (rule.name == name) {
            static_cast<void>(Print(Heading(name, style) + "\n\n" + lint::PlainText(rule, HelpColumns())));
            return ExitCode::kOk;
        }
    }
    const std::vector<std::string> close = Suggest(name, lint::RuleNames());
    throw CommandError(ExitCode::kUsage,
                       "there is no rule '" + name + "'; " +
                           (close.empty() ? "'vqmctl explain' lists them" : "did you mean " + JoinWithOr(close) + "?"));
}

} // namespace

void AddExplainCommand(CommandLine& line)
{
    const auto name = std::make_shared<std::string>();
    CLI::App& command = line.AddCommand("explain", "Explain a rule of the linter, or list all of them",
                                        [name] { return ExplainRule(*name); });
    command.add_option("rule", *name, "The rule's name, as it stands behind a finding")->type_name("RULE");
}
