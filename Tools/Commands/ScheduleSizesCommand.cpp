#include <memory>
#include <stdexcept>
#include <string>

#include "Diagnostics/Sizes/Sizes.h"
#include "Diagnostics/Text/InputFile.h"
#include "Diagnostics/Text/Words.h"
#include "Tools/CommandError.h"
#include "Tools/Commands/DocumentEdit.h"
#include "Tools/Commands/ScheduleCommands.h"
#include "Tools/Commands/TvSchedule.h"
#include "Tools/Terminal/Terminal.h"

namespace {

struct Arguments {
    std::string file;
    readiness::Places places; ///< of the TV whose schedule it is, when no file is given
    std::string media;
    bool write = false;
    bool json = false;
};

sizes::Report Compare(const std::string& name, const std::string& document, const std::string& media)
{
    try {
        return sizes::Compare(name, document, media);
    } catch (const std::runtime_error& error) {
        throw CommandError(ExitCode::kCouldNotRun, error.what());
    }
}

void PrintProblems(const std::string& name, const sizes::Report& report)
{
    for (const Diagnostic& problem : report.problems) {
        PrintError(name + ":" + std::to_string(problem.line) + ":" + std::to_string(problem.column) + ": " +
                   problem.message + " [" + problem.id + "]");
    }
    if (report.problemCount > report.problems.size()) {
        PrintError(name + ": " + Counted(report.problemCount - report.problems.size(), "further problem") +
                   " not shown");
    }
}

ExitCode Sizes(const Arguments& arguments)
{
    const std::string path = GivenOrTvSchedule(arguments.file, arguments.places);
    const std::string name = ShownName(path);
    const EditableFile file = OpenDocument(path, arguments.write);
    const sizes::Report report = Compare(name, file.Content(), arguments.media);
    const std::vector<Edit> edits = report.Edits();
    const bool written = arguments.write && !edits.empty();
    if (!arguments.json) {
        static_cast<void>(PrintDiff(path, file, edits));
    }
    if (written) {
        WriteEdits(file, edits);
    }
    if (arguments.json) {
        static_cast<void>(sizes::WriteJson(report, name, arguments.media, written, Print));
    } else {
        PrintProblems(name, report);
        if (!edits.empty()) {
            PrintError(Counted(edits.size(), "number") +
                       (written ? " corrected in '" + name + "'" : " to correct; --write does it"));
        }
    }
    return report.problemCount > 0 || (!edits.empty() && !written) ? ExitCode::kFindings : ExitCode::kOk;
}

} // namespace

void AddScheduleSizesCommand(CommandLine& line, CLI::App& group)
{
    const auto arguments = std::make_shared<Arguments>();
    CLI::App& command =
        line.AddCommand(group, "sizes", "Compare the announced sizes with the media files, and correct them",
                        [arguments] { return Sizes(*arguments); });
    command.add_option("file", arguments->file, "The document; '-' is stdin; the TV's own by default")
        ->type_name("FILE");
    AddTvScheduleOptions(command, arguments->places);
    command.add_option("--media", arguments->media, "The folder with the media files")->required()->type_name("DIR");
    command.add_flag("--write", arguments->write, "Change the document; without it the changes are shown");
    command.add_flag("--json", arguments->json, "Print Docs/schemas/schedule-sizes.schema.json");
}
