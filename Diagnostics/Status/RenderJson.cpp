#include "Diagnostics/Status/Render.h"

#include "Diagnostics/Programme/ProgrammeText.h"
#include "Diagnostics/Readiness/Render.h"
#include "Diagnostics/Text/Json.h"

namespace status {

namespace {

Json SettingJson(const SettingStatus& setting)
{
    return {{"enabled", setting.enabled},
            {"file", TextOrNull(setting.file)},
            {"stored", setting.stored ? Json(Utf8(*setting.stored)) : Json(nullptr)},
            {"valid", !IsStrange(setting)},
            {"problem", TextOrNull(setting.problem)}};
}

std::string NameOf(ApplicationStatus::State state)
{
    using State = ApplicationStatus::State;
    switch (state) {
    case State::kNoDisplay:
        return "no-display";
    case State::kUnreachable:
        return "display-unreachable";
    case State::kSilent:
        return "display-silent";
    case State::kNotAsked:
        return "display-not-asked";
    case State::kNotRunning:
        return "not-running";
    case State::kRunning:
        break;
    }
    return "running";
}

Json ApplicationJson(const Report& report)
{
    const ApplicationStatus& application = report.application;
    Json json = {{"id", report.applicationId},
                 {"state", NameOf(application.state)},
                 {"display", TextOrNull(application.display)},
                 {"problem", TextOrNull(application.problem)}};
    if (application.state == ApplicationStatus::State::kRunning) {
        json["pid"] = application.pid;
        json["tool_keys"] = Json::array();
        for (const ToolKey& key : application.toolKeys) {
            json["tool_keys"].push_back({{"key", key.name}, {"state", NameOf(key.grab)}});
        }
        json["held_keys"] = application.heldKeys;
        json["failed_keys"] = application.failedKeys;
    }
    return json;
}

Json PopupsJson(const PopupStatus& popups)
{
    return {{"state", NameOf(popups.state)},
            {"service", TextOrNull(popups.service)},
            {"pid", popups.pid > 0 ? Json(popups.pid) : Json(nullptr)},
            {"problem", TextOrNull(popups.why)}};
}

Json ScheduleJson(const Report& report)
{
    const readiness::Schedule& schedule = report.content.schedule;
    Json json = {{"directory", Utf8(schedule.directory)},
                 {"path", Utf8(schedule.path)},
                 {"state", NameOf(schedule.state)},
                 {"problem", TextOrNull(schedule.problem)}};
    if (schedule.state == readiness::DocumentState::kLoaded) {
        json["expiration"] = schedule::ExpirationJson(schedule.policy, report.clock.now.day);
    }
    return json;
}

Json ContentsJson(const readiness::Report& content)
{
    Json json = {{"directory", Utf8(content.contents.directory)}, {"have_all", content.verdict.haveContents}};
    if (content.schedule.state == readiness::DocumentState::kLoaded) {
        json["total"] = content.contents.files.size();
        json["complete"] = content.contents.complete;
    }
    return json;
}

Json ClockJson(const Report& report)
{
    Json json = schedule::ClockJson(report.clock);
    json["tz"] = TextOrNull(report.zoneVariable);
    return json;
}

/// Null without a schedule.
Json ProgrammeJson(const Report& report)
{
    if (report.content.schedule.state != readiness::DocumentState::kLoaded) {
        return nullptr;
    }
    const schedule::Programme now = ProgrammeNow(report);
    Json json = schedule::ProgrammeJson(now);
    json["plays_next"] = now.next ? schedule::ProgrammeJson(ProgrammeAfter(report, *now.next))["plays"] : Json();
    return json;
}

Json VerdictJson(const std::vector<Diagnostic>& reasons)
{
    Json json = {{"ready", reasons.empty()}, {"reasons", Json::array()}};
    for (const Diagnostic& reason : reasons) {
        json["reasons"].push_back({{"id", reason.id}, {"message", Utf8(reason.message)}});
    }
    return json;
}

} // namespace

std::string RenderJson(const Report& report, const std::vector<Diagnostic>& reasons)
{
    return RenderJsonDocument({{"setting", SettingJson(report.setting)},
                               {"application", ApplicationJson(report)},
                               {"popups", PopupsJson(report.popups)},
                               {"constants", ConstantsJson(report.content.constants)},
                               {"schedule", ScheduleJson(report)},
                               {"contents", ContentsJson(report.content)},
                               {"clock", ClockJson(report)},
                               {"programme", ProgrammeJson(report)},
                               {"verdict", VerdictJson(reasons)}});
}

} // namespace status
