#include "Platform/desktop/app/RunningInstance.h"

#include <cstdlib>
#include <memory>

#include <Ecore.h>

#include "Platform/desktop/base/PlatformLog.h"
#include "Platform/desktop/x11/Instance.h"
#include "Platform/desktop/x11/XConnection.h"

namespace desktop {

namespace {

std::unique_ptr<InstanceClaim>& Claim()
{
    static std::unique_ptr<InstanceClaim> claim;
    return claim;
}

void (*launchCallback)() = nullptr;
Ecore_Fd_Handler* listener = nullptr;

void ReadEvents()
{
    Display* display = OwnDisplay();
    while (XPending(display) > 0) {
        XEvent event;
        XNextEvent(display, &event);
        if (launchCallback != nullptr && Claim() && Claim()->IsLaunchRequest(event)) {
            launchCallback();
        }
    }
}

Eina_Bool OnReadable(void* /*data*/, Ecore_Fd_Handler* /*handler*/)
{
    ReadEvents();
    return ECORE_CALLBACK_RENEW;
}

} // namespace

void BecomeTheInstance()
{
    Display* display = OwnDisplay();
    if (display == nullptr || Claim()) {
        return;
    }
    Claim() = std::make_unique<InstanceClaim>(display);
    if (const auto& other = Claim()->OtherInstance()) {
        PLATFORM_LOG(DLOG_INFO, "already running as process %d, which has been told", static_cast<int>(other->pid));
        RequestLaunch(display, *other);
        std::exit(EXIT_SUCCESS);
    }
}

void ListenForLaunchRequests(void (*callback)())
{
    launchCallback = callback;
    Display* display = OwnDisplay();
    if (callback != nullptr && display != nullptr && listener == nullptr) {
        listener =
            ecore_main_fd_handler_add(ConnectionNumber(display), ECORE_FD_READ, OnReadable, nullptr, nullptr, nullptr);
        // A request from before, read along with some reply, makes the connection readable no more.
        ReadEvents();
    } else if (callback == nullptr && listener != nullptr) {
        ecore_main_fd_handler_del(listener);
        listener = nullptr;
    }
}

void PublishKeys(const std::vector<std::string>& held, const std::vector<std::string>& failed)
{
    if (Claim()) {
        Claim()->PublishKeys(held, failed);
    }
}

void PublishKeyWindow(Window window)
{
    if (Claim()) {
        Claim()->PublishKeyWindow(window);
    }
}

} // namespace desktop
