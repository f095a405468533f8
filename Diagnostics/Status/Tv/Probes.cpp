#include "Diagnostics/Status/ApplicationStatus.h"
#include "Diagnostics/Status/PopupStatus.h"

/// What can be known on the TV without its display.
namespace status {

ApplicationStatus CollectApplication()
{
    ApplicationStatus application = WithoutDisplay(FindApplicationProcesses(), "");
    if (application.state == ApplicationStatus::State::kNoDisplay) {
        application.state = ApplicationStatus::State::kNotAsked;
        application.problem = "this user does not see the processes of others; run vqmctl as root";
    }
    return application;
}

PopupStatus CollectPopups()
{
    PopupStatus popups;
    popups.why = "the TV's popup service does not say";
    return popups;
}

} // namespace status
