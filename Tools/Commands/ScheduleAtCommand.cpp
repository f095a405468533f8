#include <memory>
#include <optional>
#include <string>
#include <unistd.h>

#include "Diagnostics/Programme/PolicyFile.h"
#include "Diagnostics/Programme/ProgrammeText.h"
#include "Diagnostics/Text/Table.h"
#include "Diagnostics/Text/TerminalText.h"
#include "Tools/CommandError.h"
#include "Tools/Commands/ScheduleCommands.h"
#include "Tools/Commands/TvSchedule.h"
#include "Tools/Terminal/Terminal.h"

namespace {

using schedule::Clock;
using schedule::PolicyFile;
using schedule::Programme;

constexpr char kTimeExpected[] = "hours:minutes:seconds or hours:minutes, such as 09:30:00 or 09:30";

struct Arguments {
    std::string first;
    std::string second;
    readiness::Places places;
    bool json = false;
};

struct Question {
    std::string file;          ///< empty: the TV's own schedule
    std::optional<int> second; ///< none asks about now
};

/// One argument is the time or the document, two are both.
Question QuestionFrom(const Arguments& arguments)
{
    const std::optional<int> second = schedule::ParseTimeOfDay(arguments.first);
    if (!arguments.second.empty()) {
        if (second) {
            return {arguments.second, second};
        }
        const bool swapped = schedule::ParseTimeOfDay(arguments.second).has_value();
        throw CommandError(ExitCode::kUsage, "'" + arguments.first + "' is not a time of day; expected " +
                                                 (swapped ? "the time first, then the document" : kTimeExpected));
    }
    // A document may have a name such as "09:30".
    if (second && access(arguments.first.c_str(), F_OK) != 0) {
        return {"", second};
    }
    return {arguments.first, std::nullopt};
}

/// The moment that is asked about, and the clock that was read for it.
struct Asked {
    schedule::Moment moment;
    Clock clock;
    bool isGiven = false; ///< the time; the day is always the clock's
};

Asked AskedAt(const std::optional<int>& second)
{
    Asked asked;
    asked.clock = schedule::ReadClock();
    asked.isGiven = second.has_value();
    asked.moment = {asked.clock.now.day, second.value_or(asked.clock.now.second)};
    return asked;
}

std::string ClockText(const Asked& asked)
{
    const std::string zone = "time zone " + ZoneText(asked.clock);
    const std::string time = schedule::TimeText(asked.moment.second);
    const std::string day = schedule::DayText(asked.moment.day);
    return asked.isGiven ? time + ", as given; today is " + day + " by this machine's clock, " + zone
                         : time + " on " + day + " by this machine's clock, " + zone;
}

std::string FilesText(const schedule::ActivePeriod& active)
{
    Table table({Table::Align::kRight});
    for (const _VQMContentInfo* file : active.files) {
        table.Add({std::to_string(file->nOrder), file->strName});
    }
    return table.Text(9);
}

std::string Text(const PolicyFile& file, const Programme& programme, const Asked& asked)
{
    const auto line = [](const std::string& what, const std::string& text) {
        return what + std::string(7 - what.size(), ' ') + EscapedForTerminal(text) + "\n";
    };
    std::string text = line("time", ClockText(asked));
    for (const schedule::ActivePeriod& active : programme.active) {
        text += line("plays", Describe(active, asked.moment.second)) + FilesText(active);
    }
    if (programme.idleReason) {
        text += line("plays", "nothing: " + Describe(*programme.idleReason));
    }
    text += line("next", DescribeNext(programme));
    for (const std::string& note : Notes(file.policy, programme)) {
        text += line("note", note);
    }
    return text;
}

Json DocumentJson(const PolicyFile& file, const Programme& programme, const Asked& asked)
{
    Json json = {{"file", Utf8(file.name)},
                 {"text_after_nul", file.textAfterNul},
                 {"time", schedule::TimeText(asked.moment.second)},
                 {"time_from", asked.isGiven ? "argument" : "clock"},
                 {"clock", ClockJson(asked.clock)}};
    json.update(ProgrammeJson(programme));
    json["overlap"] = programme.active.size() > 1;
    json["state_ok"] = programme.stateIsOk;
    json["expiration"] = schedule::ExpirationJson(file.policy, asked.moment.day);
    json["notes"] = Notes(file.policy, programme);
    return json;
}

ExitCode At(const Arguments& arguments)
{
    const Question question = QuestionFrom(arguments);
    const PolicyFile file = schedule::ReadPolicyFile(GivenOrTvSchedule(question.file, arguments.places));
    const Asked asked = AskedAt(question.second);
    const Programme programme = ProgrammeAt(file.policy, asked.moment);
    if (arguments.json) {
        static_cast<void>(Print(RenderJsonDocument(DocumentJson(file, programme, asked))));
        return ExitCode::kOk;
    }
    static_cast<void>(Print(Text(file, programme, asked)));
    PrintNote(schedule::UnreadTextNote(file));
    return ExitCode::kOk;
}

} // namespace

void AddScheduleAtCommand(CommandLine& line, CLI::App& group)
{
    const auto arguments = std::make_shared<Arguments>();
    CLI::App& command = line.AddCommand(group, "at", "Tell what plays at a time, why, and when that changes",
                                        [arguments] { return At(*arguments); });
    command.add_option("time", arguments->first, "The time of day, such as 09:30:00 or 09:30; now by default")
        ->type_name("TIME");
    command.add_option("file", arguments->second, "The document; '-' is stdin; the TV's own by default")
        ->type_name("FILE");
    AddTvScheduleOptions(command, arguments->places);
    command.add_flag("--json", arguments->json, "Print Docs/schemas/schedule-at.schema.json");
}
