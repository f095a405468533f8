#include "Diagnostics/Status/Report.h"

#include <cstdlib>

#include "Common/VQMConfig.h"

namespace status {

Report Collect(const readiness::Places& places)
{
    Report report;
    report.applicationId = VQM_APP_ID;
    report.root = places.root;
    if (report.root.empty()) {
        report.setting = CollectSetting();
        report.application = CollectApplication();
        report.launch = CollectLaunch();
        report.popups = CollectPopups();
    }
    report.clock = schedule::ReadClock();
    const char* zone = std::getenv("TZ");
    report.zoneVariable = zone != nullptr ? zone : "";
    report.content = readiness::Check(places, report.clock.now.day);
    return report;
}

schedule::Programme ProgrammeNow(const Report& report)
{
    return schedule::ProgrammeAt(report.content.schedule.policy, report.clock.now);
}

schedule::Programme ProgrammeAfter(const Report& report, const schedule::Change& change)
{
    return schedule::ProgrammeAt(report.content.schedule.policy, {report.clock.now.day, change.second});
}

} // namespace status
