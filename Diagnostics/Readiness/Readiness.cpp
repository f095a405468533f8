#include "Diagnostics/Readiness/Readiness.h"

#include "Common/VQMSyncDemoMonitor.h"
#include "Diagnostics/Readiness/Contents.h"
#include "Diagnostics/Readiness/DocumentFile.h"
#include "Diagnostics/Readiness/PipeRelease.h"

namespace readiness {

namespace {

/// The monitor checks once in its life, so that each check has one of its own.
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
void ReadPolicy(Monitor& monitor, const Verdict& verdict, Schedule& schedule)
{
    if (verdict.Ready()) {
        monitor->GetCurrentPolicy(schedule.policy);
        schedule.state = DocumentState::kLoaded;
        return;
    }
    const DocumentFile file = ReadExamined(schedule.path, [&](const std::string& opened) {
        return monitor->ParseStoredSchedule(opened, &schedule.policy);
    });
    schedule.state = file.state;
    schedule.problem = file.problem;
}

} // namespace

Report Check(const std::string& constantsPath, const schedule::Day& today, const Progress& progress)
{
    Report report{LoadConstants(constantsPath)};
    Monitor monitor;
    Schedule& stored = report.schedule;
    monitor->GetSyncDemoSchedulePath(stored.directory);
    const std::string* const fileName = report.constants.ScheduleFile();
    stored.path = stored.directory + (fileName != nullptr ? *fileName : "");
    monitor->GetSyncDemoMediaPath(report.contents.directory);

    report.verdict = RunContentCheck(monitor, stored.path);
    ReadPolicy(monitor, report.verdict, stored);
    stored.expiry = schedule::ExpiryOn(stored.policy, today);
    report.contents = ExamineContents(stored.policy, report.contents.directory, progress);
    return report;
}

} // namespace readiness
