#include "Diagnostics/Status/Verdict.h"

#include "Diagnostics/Programme/ProgrammeText.h"
#include "Diagnostics/Readiness/Remarks.h"
#include "Diagnostics/Status/Wording.h"

namespace status {

namespace {

using Reasons = std::vector<Reason>;

void AddSetting(const SettingStatus& setting, Reasons& reasons)
{
    if (!setting.problem.empty()) {
        reasons.push_back({"setting-unreadable", "the setting counts as off: " + setting.problem});
    } else if (!setting.enabled) {
        reasons.push_back({"setting-off", "the setting is off; 'vqmctl setting on' switches it on"});
    }
}

void AddApplication(const Report& report, Reasons& reasons)
{
    using State = ApplicationStatus::State;
    const ApplicationStatus& application = report.application;
    if (application.state == State::kNotRunning) {
        reasons.push_back({"application-not-running", ApplicationText(report)});
    } else if (application.state != State::kRunning) {
        reasons.push_back({"application-unknown", "whether the application runs is " + ApplicationText(report)});
    }
    for (const ToolKey& key : application.toolKeys) {
        if (key.grip == Grip::kTaken) {
            reasons.push_back({"tool-key-taken", ToolKeyText(key)});
        } else if (key.grip == Grip::kFree) {
            reasons.push_back({"tool-key-not-held", ToolKeyText(key)});
        }
    }
}

bool IsAboutAFile(const readiness::Remark& remark)
{
    return remark.rule.rfind("file-", 0) == 0;
}

/// Of many files that are missing the first one is enough here.
void AddContent(const readiness::Report& content, Reasons& reasons)
{
    std::size_t files = 0;
    std::size_t place = 0;
    for (const readiness::Remark& remark : Explain(content)) {
        if (!remark.blocking || (IsAboutAFile(remark) && files++ > 0)) {
            continue;
        }
        reasons.push_back({remark.rule, remark.message});
        place = IsAboutAFile(remark) ? reasons.size() - 1 : place;
    }
    if (files > 1) {
        reasons[place].text += " (and " + std::to_string(files - 1) + " more: 'vqmctl check' names them)";
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
        reasons.push_back({"expired", "the schedule's expiration was " +
                                          schedule::DescribeExpiration(schedule.policy, report.clock.now.day)});
    }
    if (programme.silence) {
        reasons.push_back({"nothing-scheduled", "nothing is scheduled now: " + Describe(*programme.silence)});
    }
}

} // namespace

std::vector<Reason> ReasonsAgainst(const Report& report)
{
    Reasons reasons;
    AddSetting(report.setting, reasons);
    AddApplication(report, reasons);
    AddContent(report.content, reasons);
    AddProgramme(report, reasons);
    return reasons;
}

} // namespace status
