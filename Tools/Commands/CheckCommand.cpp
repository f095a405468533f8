#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <unistd.h>

#include "Diagnostics/Readiness/Render.h"
#include "Diagnostics/Text/InputFile.h"
#include "Tools/CommandError.h"
#include "Tools/CommandLine.h"
#include "Tools/Commands/Commands.h"
#include "Tools/Commands/PlaceOptions.h"
#include "Tools/Terminal/ProgressBar.h"
#include "Tools/Terminal/Terminal.h"
#include "Tools/Watch/ReadinessWatch.h"

namespace {

struct Arguments {
    readiness::Places places;
    bool json = false;
    bool watch = false;
};

/// With a progress bar, for a person who waits.
readiness::Report Check(const Arguments& arguments)
{
    readiness::Progress progress;
    std::optional<ProgressBar> bar;
    if (const std::size_t columns = TerminalColumns(); columns > 0) {
        bar.emplace([](const std::string& text) { std::fwrite(text.data(), 1, text.size(), stderr); }, columns);
        progress = [&bar](std::size_t done, std::size_t total) { bar->Show(done, total, "files examined"); };
    }
    return readiness::Check(arguments.places, schedule::ReadClock().now.day, progress);
}

ExitCode CodeOf(readiness::Outcome outcome)
{
    switch (outcome) {
    case readiness::Outcome::kNotChecked:
        return ExitCode::kCouldNotRun;
    case readiness::Outcome::kPlaysNothing:
    case readiness::Outcome::kNotAsMeant:
        return ExitCode::kFindings;
    case readiness::Outcome::kPerhapsNotMeant:
    case readiness::Outcome::kAsMeant:
        break;
    }
    return ExitCode::kOk;
}

ExitCode CheckOnce(const Arguments& arguments)
{
    const readiness::Report report = Check(arguments);
    static_cast<void>(arguments.json ? WriteJson(report, std::nullopt, Print)
                                     : Print(Render(report, Style(WantsColour(STDOUT_FILENO)))));
    return CodeOf(OutcomeOf(report, Explain(report)));
}

ExitCode CheckAgainAndAgain(const Arguments& arguments)
{
    if (arguments.places.constants == kStdin) {
        throw CommandError(ExitCode::kUsage, "--watch needs a file to watch; expected --constants FILE instead of '-'");
    }
    bool first = true;
    ReadinessWatch watch([&arguments] { return Check(arguments); },
                         [&](const readiness::Report& report) {
                             const schedule::Moment now = schedule::ReadClock().now;
                             if (arguments.json) {
                                 return WriteJson(report, now, Print);
                             }
                             const std::string time = DayText(now.day) + " " + schedule::TimeText(now.second) + "\n";
                             const std::string before = CanRedraw() ? kClearScreen : first ? "" : "\n";
                             first = false;
                             return Print(before + time + Render(report, Style(WantsColour(STDOUT_FILENO))));
                         });
    return CodeOf(watch.Run());
}

} // namespace

void AddCheckCommand(CommandLine& line)
{
    const auto arguments = std::make_shared<Arguments>();
    CLI::App& command = line.AddCommand("check", "Is all there that this TV is to play? If not, why?", [arguments] {
        RequirePlausible(arguments->places);
        return arguments->watch ? CheckAgainAndAgain(*arguments) : CheckOnce(*arguments);
    });
    AddPlaceOptions(command, arguments->places);
    command.add_flag("--json", arguments->json, "Print one JSON document; with --watch one on each line");
    command.add_flag("--watch", arguments->watch, "Check again after each change, until Ctrl-C");
}
