#include "Diagnostics/Status/ApplicationStatus.h"

namespace status {

ApplicationStatus WithoutDisplay(const ApplicationProcesses& running, const std::string& advice)
{
    using State = ApplicationStatus::State;
    ApplicationStatus application;
    application.problem = advice;
    if (running.processes.empty()) {
        application.state = running.complete ? State::kNotRunning : State::kNoDisplay;
        return application;
    }
    const ApplicationProcess& first = running.processes.front();
    application.state = State::kUnseen;
    application.pid = first.pid;
    application.stopped = first.stopped;
    for (const ApplicationProcess& process : running.processes) {
        // Two processes whose displays are not known may well be on two displays.
        if (process.pid != first.pid && !process.display.empty() && process.display == first.display) {
            application.others.push_back(process.pid);
        }
    }
    return application;
}

} // namespace status
