#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unistd.h>

#include "Diagnostics/Programme/PolicyFile.h"
#include "Diagnostics/Text/InputFile.h"
#include "Diagnostics/Timeline/Render.h"
#include "Tools/CommandError.h"
#include "Tools/Commands/ScheduleCommands.h"
#include "Tools/Commands/TvSchedule.h"
#include "Tools/Terminal/OutputFile.h"
#include "Tools/Terminal/Terminal.h"

namespace {

using schedule::Clock;
using schedule::Day;
using schedule::PolicyFile;
using timeline::Timeline;

constexpr std::string_view kPictureEnding = ".svg";

struct Arguments {
    std::string file;
    readiness::Places places;
    std::string day;
    std::string picture;
    bool json = false;
};

Day DayFrom(const std::string& text, const Day& today)
{
    if (text.empty()) {
        return today;
    }
    const std::optional<Day> day = schedule::ParseDay(text);
    if (!day) {
        throw CommandError(ExitCode::kUsage, "--on '" + text + "' is no day; expected year-month-day");
    }
    return *day;
}

/// Refuses a name with another ending: it is probably a slip, and may be that of the document.
void CheckPictureName(const std::string& name)
{
    const bool isPicture = name.size() > kPictureEnding.size() &&
                           name.compare(name.size() - kPictureEnding.size(), std::string::npos, kPictureEnding) == 0;
    if (!name.empty() && name != kStdin && !isPicture) {
        throw CommandError(ExitCode::kUsage,
                           "-o '" + name + "' is no name of an SVG picture; expected one that ends in .svg, or '-'");
    }
}

ExitCode Show(const Arguments& arguments)
{
    if (arguments.json && !arguments.picture.empty()) {
        throw CommandError(ExitCode::kUsage, "--json and -o exclude each other");
    }
    CheckPictureName(arguments.picture);
    const Clock clock = schedule::ReadClock();
    const Day& today = clock.now.day;
    const Day day = DayFrom(arguments.day, today);
    const PolicyFile file = schedule::ReadPolicyFile(GivenOrTvSchedule(arguments.file, arguments.places));
    const bool isToday = day.year == today.year && day.month == today.month && day.day == today.day;
    const Timeline timeline =
        timeline::TimelineOf(file.policy, file.name, day, isToday ? std::optional(clock.now.second) : std::nullopt);
    if (arguments.json) {
        WriteJson(timeline, file, clock, [](std::string_view part) { return Print(part); });
        return ExitCode::kOk;
    }
    if (arguments.picture.empty()) {
        const timeline::TerminalStyle style = {OutputColumns(), WantsColour(STDOUT_FILENO), ShowsUnicode()};
        static_cast<void>(Print(RenderForTerminal(timeline, style)));
    } else if (arguments.picture == kStdin) {
        static_cast<void>(Print(RenderSvg(timeline)));
    } else {
        WriteOutputFile(arguments.picture, RenderSvg(timeline));
    }
    PrintNote(schedule::UnreadTextNote(file));
    return ExitCode::kOk;
}

} // namespace

void AddScheduleTimelineCommand(CommandLine& line, CLI::App& group)
{
    const auto arguments = std::make_shared<Arguments>();
    CLI::App& command =
        line.AddCommand(group, "timeline", "Draw the day: what plays, what overlaps, where nothing plays",
                        [arguments] { return Show(*arguments); });
    command.add_option("file", arguments->file, "The document; '-' is stdin; the TV's own by default")
        ->type_name("FILE");
    AddTvScheduleOptions(command, arguments->places);
    command.add_option("--on", arguments->day, "The day; today by default")->type_name("YEAR-MONTH-DAY");
    command.add_option("-o,--output", arguments->picture, "Write an SVG picture to this file; '-' is stdout")
        ->type_name("FILE");
    command.add_flag("--json", arguments->json, "Print Docs/schemas/schedule-timeline.schema.json");
}
