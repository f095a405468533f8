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
    answer.daemon = bus.OwnerOf(desktop::kNotificationsName);
    // Asked second: without it, no owner only means that the bus fell silent.
    answer.busIdentity = bus.Identity();
    answer.busAnswers = !answer.busIdentity.empty();
    if (answer.daemon.empty() || !answer.busAnswers) {
        return answer;
    }
    desktop::NotificationDaemon daemon(bus, answer.daemon);
    bool paused = false;
    const desktop::BusAnswer told = daemon.GetPaused(paused);
    answer.daemonAnswers = told != desktop::BusAnswer::kSilent;
    if (told == desktop::BusAnswer::kDone) {
        answer.paused = paused;
    }
    if (answer.daemonAnswers) {
        answer.product = daemon.ProductName();
    }
    return answer;
}

} // namespace status
