#include <memory>
#include <string>

#include "Diagnostics/Programme/PolicyFile.h"
#include "Diagnostics/Programme/ProgrammeText.h"
#include "Diagnostics/Text/Table.h"
#include "Tools/Commands/ScheduleCommands.h"
#include "Tools/Commands/TvSchedule.h"
#include "Tools/Terminal/Terminal.h"

namespace {

using schedule::PolicyFile;

struct Arguments {
    std::string file;
    readiness::Places places;
    bool json = false;
};

/// Everything but the periods, under the names that the document has for it.
std::string FieldsText(const _VQMPolicy& policy, const schedule::Day& today)
{
    Table table({Table::Align::kLeft});
    table.Add({"state", policy.bError ? "not ok" : "ok"});
    table.Add({"period", std::to_string(policy.nCheckPeriod) + " minutes between checks"});
    table.Add({"project id", std::to_string(policy.nProjectID)});
    table.Add({"version", policy.strVersion});
    table.Add({"item_count", std::to_string(policy.nItemCount) + " announced, " +
                                 std::to_string(schedule::CountItems(policy)) + " read"});
    table.Add({"total_size", std::to_string(policy.nTotalSize) + " bytes announced"});
    table.Add({"expiration", schedule::DescribeExpiration(policy, today)});
    table.Add({"IsMaster", policy.IsMaster ? "yes" : "no"});
    table.Add({"NumOfPlayer", std::to_string(policy.NumOfPlayer)});
    table.Add({"IPAddrOfMaster", policy.IPAddrOfMaster});
    table.Add({"IPType", std::to_string(policy.IPType)});
    table.Add({"IPAddr", policy.IPAddr});
    table.Add({"SubnetMask", policy.SubnetMask});
    table.Add({"Gateway", policy.Gateway});
    table.Add({"TypeOfNetwork", std::to_string(policy.TypeOfNetwork)});
    table.Add({"WirelessGroupName", policy.WirelessGroupName});
    table.Add({"nImageDuration", std::to_string(policy.nImageDuration)});
    return table.Text();
}

std::string PeriodText(const _VQMSchdule& period, std::size_t number)
{
    const std::size_t count = period.listContents.size();
    std::string text = "\nperiod " + std::to_string(number) + ": " + schedule::DescribeTimes(period) + "; " +
                       (count == 0 ? "no files" : std::to_string(count) + (count == 1 ? " file" : " files")) + "\n";
    if (count == 0) {
        return text;
    }
    Table table({Table::Align::kRight, Table::Align::kLeft, Table::Align::kRight, Table::Align::kLeft});
    table.Add({"order", "id", "bytes", "file"});
    for (const _VQMContentInfo& content : period.listContents) {
        table.Add({std::to_string(content.nOrder), content.strID, std::to_string(content.nSize), content.strName});
    }
    return text + table.Text(4);
}

/// Prints period by period, because a document may have half a million items and the reader may go.
void PrintText(const PolicyFile& file, const schedule::Day& today)
{
    bool isRead = Print(FieldsText(file.policy, today));
    if (file.policy.listSchedule.empty()) {
        isRead = isRead && Print("\nno periods\n");
    }
    std::size_t number = 0;
    for (const _VQMSchdule& period : file.policy.listSchedule) {
        if (!isRead) {
            return;
        }
        isRead = Print(PeriodText(period, ++number));
    }
}

Json PeriodJson(const _VQMSchdule& period, std::size_t number)
{
    Json json = {{"period", number},
                 {"start", schedule::TimeText(schedule::SecondsOf(period.stStartTime))},
                 {"end", schedule::TimeText(schedule::SecondsOf(period.stEndTime))},
                 {"ever_plays", !schedule::SpanOf(period).IsEmpty()},
                 {"files", Json::array()}};
    for (const _VQMContentInfo& content : period.listContents) {
        json["files"].push_back(schedule::FileJson(content));
    }
    return json;
}

Json DocumentJson(const PolicyFile& file, const schedule::Day& today)
{
    const _VQMPolicy& policy = file.policy;
    Json json = {{"file", Utf8(file.name)},
                 {"text_after_nul", file.textAfterNul},
                 {"state_ok", !policy.bError},
                 {"check_period_minutes", policy.nCheckPeriod},
                 {"project",
                  {{"id", policy.nProjectID},
                   {"version", Utf8(policy.strVersion)},
                   {"item_count", policy.nItemCount},
                   {"total_size", policy.nTotalSize}}},
                 {"expiration", schedule::ExpirationJson(policy, today)},
                 {"player",
                  {{"is_master", policy.IsMaster},
                   {"players", policy.NumOfPlayer},
                   {"master_address", Utf8(policy.IPAddrOfMaster)},
                   {"ip_type", policy.IPType},
                   {"address", Utf8(policy.IPAddr)},
                   {"subnet_mask", Utf8(policy.SubnetMask)},
                   {"gateway", Utf8(policy.Gateway)},
                   {"network_type", policy.TypeOfNetwork},
                   {"wireless_group", Utf8(policy.WirelessGroupName)},
                   {"image_duration", policy.nImageDuration}}},
                 {"periods", Json::array()}};
    std::size_t number = 0;
    for (const _VQMSchdule& period : policy.listSchedule) {
        json["periods"].push_back(PeriodJson(period, ++number));
    }
    return json;
}

ExitCode Show(const Arguments& arguments)
{
    const PolicyFile file = schedule::ReadPolicyFile(GivenOrTvSchedule(arguments.file, arguments.places));
    const schedule::Day today = schedule::ReadClock().now.day;
    if (arguments.json) {
        static_cast<void>(Print(RenderJsonDocument(DocumentJson(file, today))));
        return ExitCode::kOk;
    }
    PrintText(file, today);
    PrintNote(schedule::UnreadTextNote(file));
    return ExitCode::kOk;
}

} // namespace

void AddScheduleShowCommand(CommandLine& line, CLI::App& group)
{
    const auto arguments = std::make_shared<Arguments>();
    CLI::App& command = line.AddCommand(group, "show", "Print a schedule document as the TV reads it",
                                        [arguments] { return Show(*arguments); });
    command.add_option("file", arguments->file, "The document; '-' is stdin; the TV's own by default")
        ->type_name("FILE");
    AddTvScheduleOptions(command, arguments->places);
    command.add_flag("--json", arguments->json, "Print Docs/schemas/schedule-show.schema.json");
}
