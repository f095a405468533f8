#include "Diagnostics/Readiness/Readiness.h"

#include <algorithm>
#include <unistd.h>

#include "Common/VQMSyncDemoMonitor.h"
#include "Diagnostics/Readiness/Access.h"
#include "Diagnostics/Readiness/Contents.h"
#include "Diagnostics/Readiness/DocumentFile.h"
#include "Diagnostics/Readiness/FileKinds.h"
#include "Diagnostics/Readiness/FileTree.h"
#include "Diagnostics/Readiness/MissingFile.h"
#include "Diagnostics/Readiness/NewConstants.h"
#include "Diagnostics/Readiness/PipeRelease.h"
#include "Diagnostics/Readiness/ScheduleLint.h"
#include "Diagnostics/Text/Words.h"

namespace readiness {

namespace {

/// The monitor checks once in its life, so each check gets a new one.
class Monitor {
public:
    Monitor() = default;
    ~Monitor() { CVQMSyncDemoMonitor::DestroyInstance(); }

    Monitor(const Monitor&) = delete;
    Monitor& operator=(const Monitor&) = delete;

    CVQMSyncDemoMonitor* operator->() const { return monitor_; }

private:
    static CVQMSyncDemoMonitor* Fresh()
    {
        CVQMSyncDemoMonitor::DestroyInstance();
        return CVQMSyncDemoMonitor::GetInstance();
    }

    CVQMSyncDemoMonitor* monitor_ = Fresh();
};

Verdict RunContentCheck(Monitor& monitor, const std::string& schedulePath)
{
    Verdict verdict;
    const DocumentFile file = Examine(schedulePath);
    if (file.wouldBlock) {
        verdict.problem = "the schedule '" + schedulePath + "' " + file.problem;
        return verdict;
    }
    {
        const PipeRelease release(schedulePath);
        verdict.ran = monitor->Create();
    }
    if (!verdict.ran) {
        verdict.problem = "the schedule '" + schedulePath + "' " +
                          (file.problem.empty() ? "made the library's check fail; -v shows its log" : file.problem);
    }
    verdict.haveSchedule = monitor->CheckHaveSchedule();
    verdict.haveContents = monitor->CheckHaveContents();
    return verdict;
}

/// The policy, whether or not the check let it become the current one.
void ReadPolicy(Monitor& monitor, Schedule& schedule)
{
    const DocumentFile file = ReadExamined(schedule.place, [&](const std::string& opened) {
        return monitor->ParseStoredSchedule(opened, &schedule.policy);
    });
    schedule.state = file.state;
    schedule.problem = file.problem;
}

void RunAndExamine(Monitor& monitor, const FileTree& tree, const Progress& progress, Report& report)
{
    Schedule& schedule = report.schedule;
    report.verdict = RunContentCheck(monitor, schedule.path);
    if (report.verdict.Ready()) {
        monitor->TakeCurrentPolicy(schedule.policy); // no check follows on this monitor
        schedule.state = DocumentState::kLoaded;
    } else {
        ReadPolicy(monitor, schedule);
    }
    report.contents = ExamineContents(schedule.policy, tree, report.contents.directory, progress);
}

/// The check's steps in other places than those that the library has compiled in.
void CheckStepByStep(Monitor& monitor, const FileTree& tree, const Progress& progress, Report& report)
{
    Schedule& schedule = report.schedule;
    Verdict& verdict = report.verdict;
    ReadPolicy(monitor, schedule);
    report.contents = ExamineContents(schedule.policy, tree, report.contents.directory, progress);
    // The library's check throws where the schedule's path cannot be examined, so it has not run there either.
    const DocumentFile file = Examine(schedule.place);
    verdict.ran = !file.wouldBlock && !file.notExamined;
    if (!verdict.ran) {
        verdict.problem = "the schedule " + Quoted(schedule.path) + " " + file.problem;
        return;
    }
    verdict.haveSchedule = schedule.state == DocumentState::kLoaded;
    verdict.haveContents = verdict.haveSchedule && report.contents.complete == report.contents.items.size();
}

std::string WithSlash(std::string directory)
{
    return directory.empty() || directory.back() == '/' ? directory : directory + "/";
}

std::string MediaDirectory(Monitor& monitor, const Places& places, const FileTree& tree)
{
    std::string directory;
    monitor->GetSyncDemoMediaPath(directory);
    return places.media.empty() ? tree.Name(directory) : WithSlash(places.media);
}

/// Root may read what the application may not.
std::vector<std::string> ClosedToTheApplication(const Places& places, const FileTree& tree, const Report& report)
{
    std::vector<std::string> found;
    if (geteuid() != 0) {
        return found;
    }
    const auto add = [&](bool isRead, const std::string& path) {
        const std::string closed = isRead ? ClosedToOthers(tree.Root(), tree.Locate(path)) : "";
        if (!closed.empty() && std::find(found.begin(), found.end(), closed) == found.end()) {
            found.push_back(closed);
        }
    };
    add(places.constants.empty() && report.constants.state == DocumentState::kLoaded, report.constants.path);
    add(places.schedule.empty() && report.schedule.state == DocumentState::kLoaded, report.schedule.path);
    add(places.media.empty() && report.contents.complete > 0, report.contents.directory);
    return found;
}

} // namespace

Schedule FindSchedule(const Places& places, const Constants& constants)
{
    const FileTree tree(places.root);
    Schedule schedule;
    if (!places.schedule.empty()) {
        const bool bare = places.schedule.find('/') == std::string::npos;
        schedule.path = (bare ? "./" : "") + places.schedule; // its directory is searched if it is missing
        schedule.directory = schedule.path.substr(0, schedule.path.rfind('/') + 1);
    } else {
        std::string directory;
        CVQMSyncDemoMonitor::GetInstance()->GetSyncDemoSchedulePath(directory);
        const std::string* const fileName = constants.ScheduleFile();
        schedule.directory = tree.Name(directory);
        schedule.path = schedule.directory + (fileName != nullptr ? *fileName : "");
    }
    schedule.place = tree.Locate(schedule.path);
    return schedule;
}

Report Check(const Places& places, const schedule::Day& today, const Progress& progress)
{
    const FileTree tree(places.root);
    Report report{LoadConstants(places)};
    Monitor monitor;
    report.schedule = FindSchedule(places, report.constants);
    ScheduleLint findings(report.schedule.place, today); // works in the background until `Take`
    report.contents.directory = MediaDirectory(monitor, places, tree);
    report.compiledIn = tree.IsThisMachines() && places.schedule.empty() && places.media.empty();
    (report.compiledIn ? RunAndExamine : CheckStepByStep)(monitor, tree, progress, report);
    if (report.constants.state == DocumentState::kMissing) {
        report.constants.newText = NewConstants(NameForSchedule(places));
    }
    if (report.schedule.state == DocumentState::kMissing) {
        Schedule& missing = report.schedule;
        missing.problem = "is missing" + WhyMissing(missing.path, tree);
        missing.lookAlike =
            FindOtherSchedule(tree.Locate(missing.directory), missing.path.substr(missing.directory.size()));
    }
    if (report.schedule.state == DocumentState::kLoaded) {
        report.findings = findings.Take();
    }
    report.closedToOthers = ClosedToTheApplication(places, tree, report);
    report.schedule.expiry = schedule::ExpiryOn(report.schedule.policy, today);
    return report;
}

} // namespace readiness
