#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Diagnostics/Group/Render.h"
#include "Diagnostics/Text/InputFile.h"
#include "Diagnostics/Text/Words.h"
#include "Tools/CommandError.h"
#include "Tools/Commands/ScheduleCommands.h"
#include "Tools/Terminal/Terminal.h"

namespace {

struct Arguments {
    std::vector<std::string> files;
    bool json = false;
};

void CheckFiles(const std::vector<std::string>& files)
{
    if (files.size() < 2) {
        throw CommandError(ExitCode::kUsage,
                           "'" + files.front() + "' alone is no group; expected the document of each TV");
    }
    if (std::count(files.begin(), files.end(), kStdin) > 1) {
        throw CommandError(ExitCode::kUsage, "'-' is given twice; stdin can be read once");
    }
}

ExitCode Compare(const Arguments& arguments)
{
    CheckFiles(arguments.files);
    const group::Report report = group::Compare(arguments.files);
    static_cast<void>(Print(arguments.json ? RenderJson(report) : Render(report)));
    const std::uint64_t count = report.differences.size() + report.notKept;
    if (!arguments.json) {
        PrintNote(report.notKept == 0 ? "" : Counted(report.notKept, "further difference") + " not shown");
        PrintError(count == 0 ? "the " + std::to_string(report.documents.size()) + " documents belong together"
                              : Counted(count, "difference"));
    }
    return count == 0 ? ExitCode::kOk : ExitCode::kFindings;
}

} // namespace

void AddScheduleGroupCommand(CommandLine& line, CLI::App& group)
{
    const auto arguments = std::make_shared<Arguments>();
    CLI::App& command = line.AddCommand(group, "group", "Hold the documents of several TVs against each other",
                                        [arguments] { return Compare(*arguments); });
    command.add_option("file", arguments->files, "The document of each TV; '-' is stdin")
        ->required()
        ->type_name("FILE");
    command.add_flag("--json", arguments->json, "Print Docs/schemas/schedule-group.schema.json");
}
