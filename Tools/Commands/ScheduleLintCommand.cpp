#include <memory>
#include <string>
#include <system_error>
#include <unistd.h>
#include <vector>

#include "Diagnostics/Calendar/Clock.h"
#include "Diagnostics/Lint/Lint.h"
#include "Diagnostics/Lint/Render.h"
#include "Diagnostics/Text/InputFile.h"
#include "Diagnostics/Text/Suggestions.h"
#include "Diagnostics/Text/Words.h"
#include "Tools/CommandError.h"
#include "Tools/Commands/ScheduleCommands.h"
#include "Tools/Commands/ScheduleFix.h"
#include "Tools/Commands/TvSchedule.h"
#include "Tools/Terminal/Terminal.h"

namespace {

struct Arguments {
    std::vector<std::string> files;
    readiness::Places places;
    bool json = false;
    bool oneline = false;
    bool strict = false;
    std::vector<std::string> ignored;
    std::string day;
    bool fix = false;
    bool write = false;
    bool sarif = false;
};

[[noreturn]] void RefuseValue(const std::string& option, const std::string& value,
                              const std::vector<std::string>& known)
{
    const std::vector<std::string> close = Suggest(value, known);
    std::string text = option + " '" + value + "' is unknown; ";
    if (!close.empty()) {
        text += "did you mean " + JoinWithOr(close) + "?";
    } else {
        text += "expected " + JoinWithOr(known);
    }
    throw CommandError(ExitCode::kUsage, text);
}

lint::Options OptionsFrom(const Arguments& arguments)
{
    lint::Options options;
    options.today = schedule::ReadClock().now.day;
    if (!arguments.day.empty()) {
        const std::optional<schedule::Day> day = schedule::ParseDay(arguments.day);
        if (!day) {
            throw CommandError(ExitCode::kUsage, "--on '" + arguments.day + "' is no day; expected year-month-day");
        }
        options.today = *day;
    }
    for (const std::string& name : arguments.ignored) {
        const std::optional<lint::Rule> rule = lint::FindRule(name);
        if (!rule) {
            RefuseValue("rule", name, lint::RuleNames());
        }
        options.ignored.insert(*rule);
    }
    return options;
}

lint::FileResult LintFile(const std::string& name, const lint::Options& options)
{
    lint::FileResult result{ShownName(name)};
    try {
        const InputFile input(name);
        result.report =
            lint::Lint([&input](char* buffer, std::size_t size) { return input.Read(buffer, size); }, options);
    } catch (const std::system_error& error) {
        result.error = error.code().message();
    }
    return result;
}

/// Prints until the reader has gone.
class Output {
public:
    void Write(const std::string& text)
    {
        if (!closed_ && !text.empty()) {
            closed_ = !Print(text);
        }
    }

private:
    bool closed_ = false;
};

std::vector<std::string> NamesIn(const Arguments& arguments)
{
    if (arguments.files.empty()) {
        return {GivenOrTvSchedule("", arguments.places)};
    }
    // Only for its check of the options: --root and --constants do not go with a file.
    static_cast<void>(GivenOrTvSchedule(arguments.files.front(), arguments.places));
    return arguments.files;
}

void CheckTogether(const Arguments& arguments)
{
    if (arguments.write && !arguments.fix) {
        throw CommandError(ExitCode::kUsage, "--write belongs to --fix: expected both");
    }
    const int formats = int{arguments.json} + int{arguments.oneline} + int{arguments.sarif};
    if (arguments.fix && formats > 0) {
        throw CommandError(ExitCode::kUsage, "--fix prints a diff; expected no other format");
    }
    if (formats > 1) {
        throw CommandError(ExitCode::kUsage, "--json, --oneline and --sarif exclude one another; expected one of them");
    }
}

ExitCode Lint(const Arguments& arguments)
{
    CheckTogether(arguments);
    const lint::Options options = OptionsFrom(arguments);
    if (arguments.fix) {
        return FixDocuments(NamesIn(arguments), options, arguments.write, arguments.strict);
    }
    const bool json = arguments.json;
    const bool human = !json && !arguments.oneline && !arguments.sarif;
    const Style style(WantsColour(STDOUT_FILENO));
    std::vector<lint::FileResult> results;
    Output output;
    lint::Counts counts;
    bool failed = false;
    for (const std::string& name : NamesIn(arguments)) {
        lint::FileResult result = LintFile(name, options);
        const lint::Counts& found = result.report.counts;
        counts.errors += found.errors;
        counts.warnings += found.warnings;
        counts.notes += found.notes;
        if (!result.error.empty()) {
            failed = true;
            PrintError("cannot read '" + result.name + "': " + result.error);
        }
        // These formats make one document of all files.
        if (json || arguments.sarif) {
            results.push_back(std::move(result));
            continue;
        }
        output.Write(human ? Render(result, style) : RenderOneline(result, style));
        if (result.report.notKept > 0) {
            PrintError(result.name + ": " + Counted(result.report.notKept, "further finding") + " not shown");
        }
    }
    if (arguments.sarif) {
        output.Write(RenderSarif(results, VQM_VERSION));
    } else if (json) {
        output.Write(RenderJson(results));
    } else if (human && counts.errors + counts.warnings + counts.notes > 0) {
        PrintError(Counted(counts.errors, "error") + ", " + Counted(counts.warnings, "warning") + ", " +
                   Counted(counts.notes, "note"));
    }
    if (failed) {
        return ExitCode::kCouldNotRun;
    }
    const bool bad = counts.errors + counts.warnings > 0 || (arguments.strict && counts.notes > 0);
    return bad ? ExitCode::kFindings : ExitCode::kOk;
}

} // namespace

void AddScheduleLintCommand(CommandLine& line, CLI::App& group)
{
    const auto arguments = std::make_shared<Arguments>();
    CLI::App& command = line.AddCommand(group, "lint", "Find what is wrong with schedule documents, and where",
                                        [arguments] { return Lint(*arguments); });
    command.add_option("file", arguments->files, "The documents; '-' is stdin; the TV's own by default")
        ->type_name("FILE");
    AddTvScheduleOptions(command, arguments->places);
    command.add_flag("--json", arguments->json, "Print one JSON document");
    command.add_flag("--oneline", arguments->oneline, "Print one line for each finding, without the source");
    command.add_flag("--strict", arguments->strict, "Notes count as findings too");
    command.add_option("--ignore", arguments->ignored, "Find nothing by this rule; may be given again")
        ->type_name("RULE")
        ->expected(1)
        ->allow_extra_args(false)
        ->take_all();
    command.add_flag("--sarif", arguments->sarif, "Print one log in SARIF 2.1.0, for other programs");
    command.add_flag("--fix", arguments->fix, "Show the repairs that leave no doubt, instead of the findings");
    command.add_flag("--write", arguments->write, "With --fix: change the documents");
    command.add_option("--on", arguments->day, "The day that expiration dates are compared with; today by default")
        ->type_name("YEAR-MONTH-DAY");
}
