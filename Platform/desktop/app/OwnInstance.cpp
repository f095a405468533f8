#include "Platform/desktop/app/OwnInstance.h"

#include <chrono>
#include <cstdlib>
#include <memory>

#include <Ecore.h>

#include "Platform/desktop/base/PlatformLog.h"
#include "Platform/desktop/environment/EndSignals.h"
#include "Platform/desktop/x11/Instance.h"
#include "Platform/desktop/x11/XConnection.h"

namespace desktop {

namespace {

/// An instance answers only once its start-up is over.
constexpr std::chrono::seconds kAnswerTimeout{30};
/// More than an orderly end takes.
constexpr std::chrono::seconds kPredecessorTimeout{10};

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
        // A process that is about to end does not answer: the asking process is its successor.
        if (launchCallback != nullptr && Claim() && Claim()->IsLaunchRequest(event) && !EndRequested()) {
            Claim()->AnswerLaunchRequest(event);
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
    while (Claim()->OtherInstance()) {
        const InstanceFacts other = *Claim()->OtherInstance();
        const auto pid = static_cast<int>(other.pid);
        switch (RequestLaunch(display, other, kAnswerTimeout)) {
        case LaunchAnswer::kTold:
            PLATFORM_LOG(DLOG_INFO, "already running as process %d, which has been told", pid);
            std::exit(EXIT_SUCCESS);
        case LaunchAnswer::kSilent:
            PLATFORM_LOG(DLOG_ERROR, "already running as process %d, which does not answer", pid);
            std::exit(EXIT_FAILURE);
        case LaunchAnswer::kGone:
            Claim() = std::make_unique<InstanceClaim>(display);
        }
    }
    Claim()->WaitForPredecessor(kPredecessorTimeout);
}

void ListenForLaunchRequests(void (*callback)())
{
    launchCallback = callback;
    Display* display = OwnDisplay();
    if (callback != nullptr && display != nullptr && listener == nullptr) {
        listener =
            ecore_main_fd_handler_add(ConnectionNumber(display), ECORE_FD_READ, OnReadable, nullptr, nullptr, nullptr);
        // Xlib may have read an earlier request along with some reply; the connection is not readable then.
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

void PublishReleasedKeys(const std::vector<std::string>& released)
{
    if (Claim()) {
        Claim()->PublishReleasedKeys(released);
    }
}

void PublishKeyWindow(Window window)
{
    if (Claim()) {
        Claim()->PublishKeyWindow(window);
    }
}

void GiveUpInstance()
{
    if (Claim()) {
        Claim()->GiveUp();
    }
}

} // namespace desktop
