#include "Diagnostics/Status/Verdict.h"

#include <cstdint>
#include <utility>

#include "Diagnostics/Programme/ProgrammeText.h"
#include "Diagnostics/Readiness/ScheduleLint.h"
#include "Diagnostics/Status/Wording.h"
#include "Diagnostics/Text/Words.h"

namespace status {

namespace {

using Reasons = std::vector<Diagnostic>;

Diagnostic Reason(const char* id, std::string message, bool blocking = true)
{
    Diagnostic diagnostic;
    diagnostic.id = id;
    diagnostic.severity = blocking ? Severity::kError : Severity::kNote;
    diagnostic.blocking = blocking;
    diagnostic.message = std::move(message);
    return diagnostic;
}

void JudgeSetting(const SettingStatus& setting, Reasons& launch)
{
    if (!setting.problem.empty()) {
        launch.push_back(Reason("setting-unreadable", "the setting counts as off: " + setting.problem));
    } else if (!setting.enabled) {
        launch.push_back(Reason("setting-off", "the setting is off; 'vqmctl setting on' switches it on"));
    }
}

void JudgeHealth(const ApplicationStatus& application, Reasons& launch)
{
    const std::string pid = std::to_string(application.pid);
    if (application.stopped) {
        launch.push_back(Reason("application-stopped", "the application, process " + pid +
                                                           ", is stopped; 'kill -CONT " + pid + "' lets it go on"));
    } else if (!application.answers) {
        launch.push_back(Reason("application-hung", "the application, process " + pid +
                                                        ", does not answer; end it with 'kill " + pid +
                                                        "' and start it again"));
    }
}

void JudgeApplication(const Report& report, Verdict& verdict)
{
    using State = ApplicationStatus::State;
    const ApplicationStatus& application = report.application;
    if (application.state == State::kNotRunning) {
        verdict.launch.push_back(Reason("application-not-running", ApplicationText(report)));
    } else if (application.state == State::kUnseen) {
        JudgeHealth(application, verdict.launch);
        verdict.unknown.push_back(Reason("keys-unknown", ApplicationText(report), false));
    } else if (application.state != State::kRunning) {
        verdict.unknown.push_back(
            Reason("application-unknown", "whether the application runs is " + ApplicationText(report), false));
    } else {
        JudgeHealth(application, verdict.launch);
    }
    if (application.wayland) {
        verdict.launch.push_back(Reason("wayland", "display " + Quoted(application.display) +
                                                       " is part of a Wayland session, which gives the application no "
                                                       "keys of other windows; log in to an X11 session"));
    }
    for (const ToolKey& key : application.toolKeys) {
        if (key.grab == GrabState::kTaken) {
            verdict.launch.push_back(Reason("tool-key-taken", ToolKeyText(key)));
        } else if (key.grab == GrabState::kFree) {
            verdict.launch.push_back(Reason("tool-key-not-held", ToolKeyText(key)));
        }
    }
    for (const pid_t pid : application.others) {
        verdict.remarks.push_back(Reason(
            "second-instance",
            "process " + std::to_string(pid) + " is a second instance on this display; it holds no keys", false));
    }
}

void JudgeLaunch(const LaunchStatus& status, Reasons& launch)
{
    using State = LaunchStatus::State;
    const std::string text = "the companion cannot be launched: " + status.problem;
    if (status.state == State::kNoEntry) {
        launch.push_back(Reason("companion-missing", text));
    } else if (status.state == State::kBadEntry) {
        launch.push_back(Reason("companion-entry-unusable", text));
    } else if (status.state == State::kNoProgram) {
        launch.push_back(Reason("companion-program-missing", text));
    }
}

/// Takes over the check's diagnostics. Of many files that are missing or wrong, the first one stands for all.
void JudgeContent(const readiness::Report& content, Verdict& verdict)
{
    Reasons& play = verdict.play;
    std::size_t files = 0;
    std::size_t first = 0;
    for (Diagnostic& diagnostic : Explain(content)) {
        if (!diagnostic.blocking) {
            const bool isError = diagnostic.severity == Severity::kError;
            if (isError || diagnostic.id == "expired") {
                (isError ? verdict.meaning : verdict.remarks).push_back(std::move(diagnostic));
            }
            continue;
        }
        const bool isFile = diagnostic.subject == Diagnostic::Subject::kContentFile;
        if (isFile && files++ > 0) {
            continue;
        }
        first = isFile ? play.size() : first;
        play.push_back(std::move(diagnostic));
    }
    if (files > 1) {
        play[first].message += " (and " + std::to_string(files - 1) + " more: 'vqmctl check' names them)";
    }
    const std::string counts = readiness::CountsText(content.findings.counts);
    if (!counts.empty()) {
        verdict.remarks.push_back(
            Reason("lint", "the schedule has " + counts + "; see '" + LintCommand(content) + "'", false));
    }
}

void JudgeProgramme(const Report& report, Reasons& play)
{
    if (report.content.schedule.state != readiness::DocumentState::kLoaded) {
        return;
    }
    const schedule::Programme programme = ProgrammeNow(report);
    if (programme.idleReason) {
        play.push_back(Reason("nothing-scheduled", "nothing is scheduled now: " + Describe(*programme.idleReason)));
    }
}

/// How the sentence begins; the gravest reason completes it.
std::string Outcome(const Verdict& verdict)
{
    if (!verdict.launch.empty()) {
        return "It will not launch: ";
    }
    const bool known = verdict.unknown.empty();
    if (!verdict.play.empty()) {
        return known ? "It will launch, but not play: " : "It will not play: ";
    }
    const std::string both = known ? "It will launch and play" : "It will play";
    if (!verdict.meaning.empty()) {
        return both + ", but not what was meant: ";
    }
    return known ? both : both + "; ";
}

const Diagnostic* Gravest(const Verdict& verdict)
{
    for (const Reasons* reasons : {&verdict.launch, &verdict.play, &verdict.meaning, &verdict.unknown}) {
        if (!reasons->empty()) {
            return &reasons->front();
        }
    }
    return nullptr;
}

} // namespace

Verdict Judge(const Report& report)
{
    Verdict verdict;
    if (report.root.empty()) {
        JudgeSetting(report.setting, verdict.launch);
        JudgeApplication(report, verdict);
        JudgeLaunch(report.launch, verdict.launch);
    } else {
        verdict.unknown.push_back(
            Reason("another-machine", "whether it will launch is not known from its files alone", false));
    }
    JudgeContent(report.content, verdict);
    JudgeProgramme(report, verdict.play);
    return verdict;
}

std::string Sentence(const Report& report, const Verdict& verdict)
{
    const Diagnostic* const gravest = Gravest(verdict);
    if (gravest != nullptr) {
        return Outcome(verdict) + gravest->message + ".";
    }
    const std::uint64_t warnings = report.content.findings.counts.warnings;
    return Outcome(verdict) + (warnings == 0 ? "."
                                             : ", but perhaps not what was meant: the schedule has " +
                                                   readiness::CountsText(report.content.findings.counts) + "; see '" +
                                                   LintCommand(report.content) + "'.");
}

} // namespace status
