#include "Diagnostics/Readiness/Remarks.h"
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
    json["items"] = report.contents.files.size();
    json["item_count"] = schedule.policy.nItemCount;
    json["bytes"] = report.contents.announcedBytes;
    json["total_size"] = schedule.policy.nTotalSize;
    json["state_is_ok"] = !schedule.policy.bError;
    json["expiration"] = dated ? Json(schedule::DayText(schedule::ExpirationOf(schedule.policy))) : Json();
    json["expiry"] = schedule::NameOf(schedule.expiry);
    return json;
}

Json FileJson(const ContentFile& file)
{
    return {{"period", file.period + 1}, {"name", Utf8(file.name)},     {"path", Utf8(file.path)},
            {"kind", NameOf(file.kind)}, {"announced", file.announced}, {"size", file.size},
            {"counts", file.Counts()},   {"readable", file.readable},   {"problem", TextOrNull(file.problem)}};
}

Json ContentsJson(const Contents& contents)
{
    Json json = {{"directory", Utf8(contents.directory)},
                 {"directory_present", contents.directoryPresent},
                 {"complete", contents.counting},
                 {"bytes_to_copy", contents.missingBytes},
                 {"bytes_free", contents.freeBytes ? Json(*contents.freeBytes) : Json()},
                 {"files", Json::array()}};
    for (const ContentFile& file : contents.files) {
        json["files"].push_back(FileJson(file));
    }
    return json;
}

Json RemarksJson(const std::vector<Remark>& remarks)
{
    Json json = Json::array();
    for (const Remark& remark : remarks) {
        json.push_back({{"rule", remark.rule},
                        {"decides", remark.decides},
                        {"message", Utf8(remark.message)},
                        {"path", Utf8(remark.path)}});
    }
    return json;
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
            {"schedule_file", file != nullptr ? Json(Utf8(*file)) : Json()}};
}

std::string RenderJson(const Report& report, bool oneLine)
{
    const Json json = {{"verdict", VerdictJson(report.verdict)},
                       {"constants", ConstantsJson(report.constants)},
                       {"schedule", ScheduleJson(report)},
                       {"contents", ContentsJson(report.contents)},
                       {"remarks", RemarksJson(Explain(report))}};
    return oneLine ? RenderJsonLine(json) : RenderJsonDocument(json);
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
