#include <cerrno>
#include <memory>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include "Common/VQMConfig.h"
#include "Diagnostics/Readiness/FileTree.h"
#include "Diagnostics/Readiness/MissingFile.h"
#include "Diagnostics/Readiness/NewConstants.h"
#include "Diagnostics/Readiness/Render.h"
#include "Diagnostics/Text/InputFile.h"
#include "Diagnostics/Text/Json.h"
#include "Diagnostics/Text/Suggestions.h"
#include "Diagnostics/Text/TerminalText.h"
#include "Platform/common/FileDescriptor.h"
#include "Tools/CommandError.h"
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

/// Reports a file that is missing or broken. What stands before an error in it counts for the TV and is shown
/// all the same; the exit code says that something is wrong.
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

void ReportMissing(const Constants& constants, const std::string& key)
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
            ReportMissing(constants, arguments.key);
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
    if (code == ExitCode::kOk && text.empty()) {
        PrintError("'" + constants.path + "' holds no constants; expected elements <Data key=\"...\" value=\"...\"/>");
        return ExitCode::kFindings;
    }
    return code;
}

/// Writes a new file. Never overwrites one, and leaves nothing behind when it fails.
void WriteNew(const std::string& path, const std::string& text)
{
    const auto refuse = [&path] {
        const int error = errno;
        const std::string why = error == EEXIST ? "it is there already" : std::generic_category().message(error);
        throw CommandError(ExitCode::kCouldNotRun, "cannot write '" + path + "': " + why +
                                                       (error == ENOENT ? readiness::WhyMissing(path) : ""));
    };
    const platform::FileDescriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644));
    if (!file.IsOpen()) {
        refuse();
    }
    errno = ENOSPC; // a short write means a full disk, and leaves errno as it is
    if (write(file.Get(), text.data(), text.size()) != static_cast<ssize_t>(text.size()) || fsync(file.Get()) != 0) {
        const int error = errno;
        unlink(path.c_str());
        errno = error;
        refuse();
    }
}

ExitCode Init(const Arguments& arguments)
{
    const readiness::Places& places = arguments.places;
    if (places.constants == kStdin) {
        throw CommandError(ExitCode::kUsage, "init writes a file; expected --constants FILE instead of '-'");
    }
    if (arguments.key.find('/') != std::string::npos) {
        throw CommandError(ExitCode::kUsage, "'" + arguments.key + "' is a path; expected the schedule's file name");
    }
    const std::string name = arguments.key.empty() ? readiness::NameForSchedule(places) : arguments.key;
    const readiness::FileTree tree(places.root);
    const std::string path = places.constants.empty() ? tree.Name(VQM_CONSTANTS_FILE) : places.constants;
    WriteNew(tree.Locate(path), readiness::NewConstants(name));
    static_cast<void>(
        Print("wrote " + EscapedForTerminal(path) + ": the schedule is '" + EscapedForTerminal(name) + "'\n"));
    return ExitCode::kOk;
}

void AddOptions(CLI::App& command, Arguments& arguments)
{
    AddRootOption(command, arguments.places);
    AddConstantsOption(command, arguments.places);
    command.add_flag("--json", arguments.json, "Print one JSON document");
}

} // namespace

void AddConstantsCommands(CommandLine& line)
{
    CLI::App& group = line.AddGroup("constants", "Read a constants file as the TV does, or write a new one");
    const auto arguments = std::make_shared<Arguments>();
    CLI::App& get =
        line.AddCommand(group, "get", "Print the value of a constant", [arguments] { return Get(*arguments); });
    get.add_option("key", arguments->key, "The constant's name")->required()->type_name("KEY");
    AddOptions(get, *arguments);
    AddOptions(line.AddCommand(group, "list", "Print all constants", [arguments] { return List(*arguments); }),
               *arguments);
    CLI::App& init =
        line.AddCommand(group, "init", "Write a constants file that names the schedule, where there is none",
                        [arguments] { return Init(*arguments); });
    init.add_option("name", arguments->key,
                    "The schedule's file name; by default that of the only document in the TV's directory")
        ->type_name("NAME");
    AddRootOption(init, arguments->places);
    AddConstantsOption(init, arguments->places);
}
