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
    application.state = State::kUnseen;
    application.pid = running.processes.front().pid;
    application.stopped = running.processes.front().stopped;
    for (std::size_t index = 1; index < running.processes.size(); ++index) {
        application.others.push_back(running.processes[index].pid);
    }
    return application;
}

} // namespace status
