#include <memory>
#include <string>
#include <vector>

#include "Common/VQMConfig.h"
#include "Diagnostics/Status/Render.h"
#include "Diagnostics/Status/Report.h"
#include "Diagnostics/Status/Verdict.h"
#include "Tools/CommandLine.h"
#include "Tools/Commands/Commands.h"
#include "Tools/Terminal/Terminal.h"

namespace {

struct Arguments {
    std::string constants = VQM_CONSTANTS_FILE;
    bool json = false;
};

ExitCode ShowStatus(const Arguments& arguments)
{
    const status::Report report = status::Collect(arguments.constants);
    const std::vector<status::Reason> reasons = ReasonsAgainst(report);
    static_cast<void>(Print(arguments.json ? RenderJson(report, reasons) : RenderText(report, reasons)));
    return reasons.empty() ? ExitCode::kOk : ExitCode::kFindings;
}

} // namespace

void AddStatusCommand(CommandLine& line)
{
    const auto arguments = std::make_shared<Arguments>();
    CLI::App& command = line.AddCommand("status", "Why does this TV launch or play nothing? All on one screen",
                                        [arguments] { return ShowStatus(*arguments); });
    command.add_option("--constants", arguments->constants, "The constants file; '-' is stdin")
        ->capture_default_str()
        ->type_name("FILE");
    command.add_flag("--json", arguments->json, "Print one JSON document");
}
