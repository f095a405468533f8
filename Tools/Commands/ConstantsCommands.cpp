#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Common/VQMConfig.h"
#include "Diagnostics/Readiness/Render.h"
#include "Diagnostics/Text/Json.h"
#include "Diagnostics/Text/Suggestions.h"
#include "Diagnostics/Text/TerminalText.h"
#include "Tools/CommandLine.h"
#include "Tools/Commands/Commands.h"
#include "Tools/Commands/PlaceOptions.h"
#include "Tools/Terminal/Terminal.h"

namespace {

using readiness::Constants;
using readiness::DocumentState;

struct Arguments {
    readiness::Places places;
    std::string key;
    bool json = false;
};

/// Complains of a file that is not as it should be. The part before an error counts for the TV,
/// and so it is shown; the exit code says that something is wrong.
ExitCode Judge(const Constants& constants)
{
    switch (constants.state) {
    case DocumentState::kLoaded:
    case DocumentState::kNotNeeded:
        return ExitCode::kOk;
    case DocumentState::kNotWellFormed:
        PrintError("the constants file '" + constants.path + "' " + constants.problem +
                   "; only what stands before that place counts");
        return ExitCode::kFindings;
    case DocumentState::kMissing:
    case DocumentState::kUnreadable:
        break;
    }
    PrintError("the constants file '" + constants.path + "' " + constants.problem);
    return ExitCode::kCouldNotRun;
}

void ComplainOfMissing(const Constants& constants, const std::string& key)
{
    std::vector<std::string> keys;
    for (const auto& entry : constants.values) {
        keys.push_back(entry.first);
    }
    const std::vector<std::string> close = Suggest(key, keys);
    PrintError("the constants file '" + constants.path + "' has no constant '" + key + "'" +
               (close.empty() ? "" : "; did you mean " + JoinWithOr(close) + "?"));
}

ExitCode Get(const Arguments& arguments)
{
    Constants constants = readiness::LoadConstants(arguments.places);
    ExitCode code = Judge(constants);
    const auto found = constants.values.find(arguments.key);
    if (found == constants.values.end()) {
        if (code != ExitCode::kCouldNotRun) {
            ComplainOfMissing(constants, arguments.key);
            code = ExitCode::kFindings;
        }
        constants.values.clear();
    } else {
        constants.values = {*found};
    }
    if (arguments.json) {
        static_cast<void>(Print(RenderJson(constants)));
    } else if (!constants.values.empty()) {
        static_cast<void>(Print(EscapedForTerminal(constants.values.begin()->second) + "\n"));
    }
    return code;
}

ExitCode List(const Arguments& arguments)
{
    const Constants constants = readiness::LoadConstants(arguments.places);
    const ExitCode code = Judge(constants);
    if (arguments.json) {
        static_cast<void>(Print(RenderJson(constants)));
        return code;
    }
    std::string text;
    for (const auto& [key, value] : constants.values) {
        text += "\"" + EscapedForTerminal(key) + "\" = \"" + EscapedForTerminal(value) + "\"\n";
    }
    static_cast<void>(Print(text));
    return code;
}

void AddOptions(CLI::App& command, Arguments& arguments)
{
    AddRootOption(command, arguments.places);
    command.add_option("--file", arguments.places.constants, "The constants file; '-' is stdin")
        ->default_str(VQM_CONSTANTS_FILE)
        ->type_name("FILE");
    command.add_flag("--json", arguments.json, "Print one JSON document");
}

} // namespace

void AddConstantsCommands(CommandLine& line)
{
    CLI::App& group = line.AddGroup("constants", "Read a constants file as the TV does");
    const auto arguments = std::make_shared<Arguments>();
    CLI::App& get =
        line.AddCommand(group, "get", "Print the value of a constant", [arguments] { return Get(*arguments); });
    get.add_option("key", arguments->key, "The constant's name")->required()->type_name("KEY");
    AddOptions(get, *arguments);
    AddOptions(line.AddCommand(group, "list", "Print all constants", [arguments] { return List(*arguments); }),
               *arguments);
}
