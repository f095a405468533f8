#include <cstdio>
#include <memory>
#include <optional>
#include <string>

#include "Common/VQMConfig.h"
#include "Diagnostics/Readiness/Render.h"
#include "Diagnostics/Text/InputFile.h"
#include "Tools/CommandError.h"
#include "Tools/CommandLine.h"
#include "Tools/Commands/Commands.h"
#include "Tools/Terminal/ProgressBar.h"
#include "Tools/Terminal/Terminal.h"
#include "Tools/Watch/ReadinessWatch.h"

namespace {

struct Arguments {
    std::string constants = VQM_CONSTANTS_FILE;
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
    return readiness::Check(arguments.constants, schedule::ReadClock().now.day, progress);
}

ExitCode CodeOf(const readiness::Verdict& verdict)
{
    if (!verdict.ran) {
        return ExitCode::kCouldNotRun;
    }
    return verdict.Ready() ? ExitCode::kOk : ExitCode::kFindings;
}

ExitCode CheckOnce(const Arguments& arguments)
{
    const readiness::Report report = Check(arguments);
    static_cast<void>(arguments.json ? WriteJson(report, false, Print) : Print(Render(report)));
    return CodeOf(report.verdict);
}

ExitCode CheckAgainAndAgain(const Arguments& arguments)
{
    if (arguments.constants == kStdin) {
        throw CommandError(ExitCode::kUsage, "--watch needs a file to watch; expected --constants FILE instead of '-'");
    }
    bool first = true;
    ReadinessWatch watch([&arguments] { return Check(arguments); },
                         [&](const readiness::Report& report) {
                             if (arguments.json) {
                                 return WriteJson(report, true, Print);
                             }
                             const std::string separator = first ? "" : "\n";
                             first = false;
                             return Print(separator + Render(report));
                         });
    return CodeOf(watch.Run());
}

} // namespace

void AddCheckCommand(CommandLine& line)
{
    const auto arguments = std::make_shared<Arguments>();
    CLI::App& command = line.AddCommand("check", "Is all there that this TV is to play? If not, why?", [arguments] {
        return arguments->watch ? CheckAgainAndAgain(*arguments) : CheckOnce(*arguments);
    });
    command.add_option("--constants", arguments->constants, "The constants file; '-' is stdin")
        ->capture_default_str()
        ->type_name("FILE");
    command.add_flag("--json", arguments->json, "Print one JSON document; with --watch one on each line");
    command.add_flag("--watch", arguments->watch, "Check again after each change, until Ctrl-C");
}
