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
    case State::kUnseen:
        return "unseen";
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
                 {"display_found", application.displayFound},
                 {"wayland", application.wayland},
                 {"problem", TextOrNull(application.problem)}};
    if (application.pid != 0) {
        json["pid"] = application.pid;
        json["stopped"] = application.stopped;
        json["others"] = application.others;
    }
    if (application.state == ApplicationStatus::State::kRunning) {
        json["answers"] = application.answers;
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
        json["total"] = content.contents.items.size();
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

Json LaunchJson(const LaunchStatus& launch)
{
    return {{"state", NameOf(launch.state)},
            {"companion", Utf8(launch.companion)},
            {"entry", TextOrNull(launch.entry)},
            {"program", TextOrNull(launch.program)},
            {"problem", TextOrNull(launch.problem)}};
}

Json ListJson(const std::vector<Diagnostic>& diagnostics)
{
    Json json = Json::array();
    for (const Diagnostic& diagnostic : diagnostics) {
        json.push_back({{"id", diagnostic.id}, {"message", Utf8(diagnostic.message)}});
    }
    return json;
}

Json VerdictJson(const Report& report, const Verdict& verdict)
{
    std::vector<Diagnostic> reasons = verdict.launch;
    reasons.insert(reasons.end(), verdict.play.begin(), verdict.play.end());
    return {{"ready", verdict.NothingStandsInTheWay()}, {"reasons", ListJson(reasons)},
            {"errors", ListJson(verdict.meaning)},      {"unknown", ListJson(verdict.unknown)},
            {"remarks", ListJson(verdict.remarks)},     {"sentence", Utf8(Sentence(report, verdict))}};
}

} // namespace

std::string RenderJson(const Report& report, const Verdict& verdict)
{
    const bool here = report.root.empty();
    return RenderJsonDocument({{"root", TextOrNull(report.root)},
                               {"setting", here ? SettingJson(report.setting) : Json()},
                               {"application", here ? ApplicationJson(report) : Json()},
                               {"launch", here ? LaunchJson(report.launch) : Json()},
                               {"popups", here ? PopupsJson(report.popups) : Json()},
                               {"constants", ConstantsJson(report.content.constants)},
                               {"schedule", ScheduleJson(report)},
                               {"contents", ContentsJson(report.content)},
                               {"clock", ClockJson(report)},
                               {"programme", ProgrammeJson(report)},
                               {"verdict", VerdictJson(report, verdict)}});
}

} // namespace status
