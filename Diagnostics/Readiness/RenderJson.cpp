#include "Diagnostics/Readiness/Render.h"
#include "Diagnostics/Text/Json.h"

namespace readiness {

namespace {

const char* NameOf(FileKind kind)
{
    switch (kind) {
    case FileKind::kMissing:
        return "missing";
    case FileKind::kNotExamined:
        return "not-examined";
    case FileKind::kFile:
        return "file";
    case FileKind::kDirectory:
        return "directory";
    case FileKind::kOther:
        break;
    }
    return "other";
}

Json VerdictJson(const Verdict& verdict)
{
    return {{"ready", verdict.Ready()},
            {"ran", verdict.ran},
            {"problem", TextOrNull(verdict.problem)},
            {"schedule", verdict.haveSchedule},
            {"contents", verdict.haveContents}};
}

Json ScheduleJson(const Report& report)
{
    const Schedule& schedule = report.schedule;
    Json json = {{"directory", Utf8(schedule.directory)},
                 {"path", Utf8(schedule.path)},
                 {"state", NameOf(schedule.state)},
                 {"problem", TextOrNull(schedule.problem)}};
    if (schedule.state != DocumentState::kLoaded) {
        return json;
    }
    const bool dated = schedule.expiry != schedule::Expiry::kNone;
    json["periods"] = schedule.policy.listSchedule.size();
    json["items"] = report.contents.items.size();
    json["item_count"] = schedule.policy.nItemCount;
    json["bytes"] = report.contents.announcedBytes;
    json["total_size"] = schedule.policy.nTotalSize;
    json["state_is_ok"] = !schedule.policy.bError;
    json["expiration"] = dated ? Json(schedule::DayText(schedule::ExpirationOf(schedule.policy))) : Json();
    json["expiry"] = schedule::NameOf(schedule.expiry);
    return json;
}

Json ItemJson(const ContentItem& item, const Contents& contents)
{
    const ContentFile& file = contents.FileOf(item);
    return {{"period", item.period + 1},
            {"name", Utf8(file.name)},
            {"path", Utf8(contents.PathOf(item))},
            {"kind", NameOf(file.kind)},
            {"announced", item.announced},
            {"size", file.size},
            {"size_matches", contents.SizeMatches(item)},
            {"readable", file.readable},
            {"problem", TextOrNull(file.problem)}};
}

void WriteContents(const Contents& contents, JsonWriter& json)
{
    json.BeginObject("contents");
    json.Member("directory", Utf8(contents.directory));
    json.Member("directory_present", contents.directoryPresent);
    json.Member("closed_directory", TextOrNull(contents.closedFolder));
    json.Member("complete", contents.complete);
    json.Member("bytes_to_copy", contents.missingBytes);
    json.Member("bytes_free", contents.freeBytes ? Json(*contents.freeBytes) : Json());
    json.BeginArray("files");
    for (const ContentItem& item : contents.items) {
        json.Element(ItemJson(item, contents));
    }
    json.End();
    json.End();
}

const char* NameOf(Outcome outcome)
{
    switch (outcome) {
    case Outcome::kNotChecked:
        return "not-checked";
    case Outcome::kPlaysNothing:
        return "plays-nothing";
    case Outcome::kNotAsMeant:
        return "not-as-meant";
    case Outcome::kPerhapsNotMeant:
        return "perhaps-not-as-meant";
    case Outcome::kAsMeant:
        break;
    }
    return "as-meant";
}

/// Null where there was nothing to lint.
Json LintJson(const Report& report)
{
    if (report.schedule.state != DocumentState::kLoaded) {
        return nullptr;
    }
    const lint::Counts& counts = report.findings.counts;
    return {{"errors", counts.errors}, {"warnings", counts.warnings}, {"notes", counts.notes}};
}

void WriteDiagnostics(const std::vector<Diagnostic>& diagnostics, JsonWriter& json)
{
    json.BeginArray("diagnostics");
    for (const Diagnostic& diagnostic : diagnostics) {
        json.Element({{"id", diagnostic.id},
                      {"severity", NameOf(diagnostic.severity)},
                      {"blocking", diagnostic.blocking},
                      {"message", Utf8(diagnostic.message)},
                      {"path", Utf8(diagnostic.path)}});
    }
    json.End();
}

} // namespace

const char* NameOf(DocumentState state)
{
    switch (state) {
    case DocumentState::kMissing:
        return "missing";
    case DocumentState::kUnreadable:
        return "unreadable";
    case DocumentState::kNotWellFormed:
        return "not-well-formed";
    case DocumentState::kNotNeeded:
        return "not-needed";
    case DocumentState::kLoaded:
        break;
    }
    return "loaded";
}

Json ConstantsJson(const Constants& constants)
{
    const std::string* const file = constants.ScheduleFile();
    return {{"path", Utf8(constants.path)},
            {"state", NameOf(constants.state)},
            {"problem", TextOrNull(constants.problem)},
            {"schedule_file", file != nullptr ? Json(Utf8(*file)) : Json()},
            {"lines_to_write", TextOrNull(constants.newText)}};
}

bool WriteJson(const Report& report, const std::optional<schedule::Moment>& watched, const JsonWriter::Sink& sink)
{
    JsonWriter json(sink, watched.has_value());
    if (watched) {
        json.Member("asked_at",
                    {{"day", schedule::DayText(watched->day)}, {"time", schedule::TimeText(watched->second)}});
    }
    json.Member("verdict", VerdictJson(report.verdict));
    json.Member("constants", ConstantsJson(report.constants));
    json.Member("schedule", ScheduleJson(report));
    WriteContents(report.contents, json);
    const std::vector<Diagnostic> diagnostics = Explain(report);
    json.Member("lint", LintJson(report));
    WriteDiagnostics(diagnostics, json);
    json.Member("outcome", NameOf(OutcomeOf(report, diagnostics)));
    return json.Finish();
}

std::string RenderJson(const Constants& constants)
{
    Json entries = Json::array();
    for (const auto& [key, value] : constants.values) {
        entries.push_back({{"key", Utf8(key)}, {"value", Utf8(value)}});
    }
    return RenderJsonDocument({{"file", Utf8(constants.path)},
                               {"state", NameOf(constants.state)},
                               {"problem", TextOrNull(constants.problem)},
                               {"constants", std::move(entries)}});
}

} // namespace readiness
