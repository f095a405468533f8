#include "Diagnostics/Status/Verdict.h"

#include <utility>

#include "Diagnostics/Programme/ProgrammeText.h"
#include "Diagnostics/Status/Wording.h"

namespace status {

namespace {

using Reasons = std::vector<Diagnostic>;

Diagnostic Blocking(const char* id, std::string message)
{
    Diagnostic diagnostic;
    diagnostic.id = id;
    diagnostic.blocking = true;
    diagnostic.message = std::move(message);
    return diagnostic;
}

void AddSetting(const SettingStatus& setting, Reasons& reasons)
{
    if (!setting.problem.empty()) {
        reasons.push_back(Blocking("setting-unreadable", "the setting counts as off: " + setting.problem));
    } else if (!setting.enabled) {
        reasons.push_back(Blocking("setting-off", "the setting is off; 'vqmctl setting on' switches it on"));
    }
}

void AddApplication(const Report& report, Reasons& reasons)
{
    using State = ApplicationStatus::State;
    const ApplicationStatus& application = report.application;
    if (application.state == State::kNotRunning) {
        reasons.push_back(Blocking("application-not-running", ApplicationText(report)));
    } else if (application.state != State::kRunning) {
        reasons.push_back(
            Blocking("application-unknown", "whether the application runs is " + ApplicationText(report)));
    }
    for (const ToolKey& key : application.toolKeys) {
        if (key.grab == GrabState::kTaken) {
            reasons.push_back(Blocking("tool-key-taken", ToolKeyText(key)));
        } else if (key.grab == GrabState::kFree) {
            reasons.push_back(Blocking("tool-key-not-held", ToolKeyText(key)));
        }
    }
}

/// Of many files that are missing the first one is enough here.
void AddContent(const readiness::Report& content, Reasons& reasons)
{
    std::size_t files = 0;
    std::size_t first = 0;
    for (Diagnostic& diagnostic : Explain(content)) {
        const bool isFile = diagnostic.subject == Diagnostic::Subject::kContentFile;
        if (!diagnostic.blocking || (isFile && files++ > 0)) {
            continue;
        }
        first = isFile ? reasons.size() : first;
        reasons.push_back(std::move(diagnostic));
    }
    if (files > 1) {
        reasons[first].message += " (and " + std::to_string(files - 1) + " more: 'vqmctl check' names them)";
    }
}

void AddProgramme(const Report& report, Reasons& reasons)
{
    const readiness::Schedule& schedule = report.content.schedule;
    if (schedule.state != readiness::DocumentState::kLoaded) {
        return;
    }
    const schedule::Programme programme = ProgrammeNow(report);
    if (programme.expiry == schedule::Expiry::kExpired) {
        reasons.push_back(Blocking("expired", "the schedule's expiration was " +
                                                  schedule::DescribeExpiration(schedule.policy, report.clock.now.day)));
    }
    if (programme.idleReason) {
        reasons.push_back(
            Blocking("nothing-scheduled", "nothing is scheduled now: " + Describe(*programme.idleReason)));
    }
}

} // namespace

std::vector<Diagnostic> ReasonsAgainst(const Report& report)
{
    Reasons reasons;
    AddSetting(report.setting, reasons);
    AddApplication(report, reasons);
    AddContent(report.content, reasons);
    AddProgramme(report, reasons);
    return reasons;
}

} // namespace status
