#include "Diagnostics/Status/PopupAnswer.h"

#include "Platform/desktop/bus/NotificationDaemon.h"
#include "Platform/desktop/bus/SessionBus.h"

namespace status {

PopupAnswer AskSessionBus()
{
    PopupAnswer answer;
    desktop::SessionBus bus;
    if (!bus.Join()) {
        return answer;
    }
    answer.daemon = desktop::UniqueNameIn(bus.Call(desktop::NameOwnerRequest(desktop::kNotificationsName)));
    // Asked second: if the bus still answers, an empty owner above means that there is none.
    answer.busIdentity = desktop::IdentityIn(bus.Call(desktop::IdentityRequest()));
    answer.busAnswers = !answer.busIdentity.empty();
    if (answer.daemon.empty() || !answer.busAnswers) {
        return answer;
    }
    const desktop::NotificationDaemon daemon(answer.daemon);
    const desktop::BusReply told = bus.Call(daemon.GetPausedRequest());
    answer.daemonAnswers = told.answer != desktop::BusAnswer::kSilent;
    answer.paused = desktop::PausedIn(told);
    if (answer.daemonAnswers) {
        answer.product = desktop::ProductNameIn(bus.Call(daemon.InformationRequest()));
    }
    return answer;
}

} // namespace status
