#include <cstdio>
#include <cstdlib>

#include <Efreet.h>
#include <Elementary.h>

#include "Common/VQMConfig.h"
#include "Companion/RaiseRequests.h"
#include "Companion/SyncDemoWindow.h"
#include "Platform/desktop/environment/ToolkitHome.h"
#include "Platform/desktop/x11/Instance.h"
#include "Platform/desktop/x11/XConnection.h"

namespace {

constexpr char kCompanionId[] = VQM_APP_ID ".gui";
constexpr int kCouldNotRun = 3;

/// A window of its own needs no power or locale daemons, no index of the installed applications,
/// and no word about each read of the setting in the log it shares with the launching application.
void KeepQuiet()
{
    setenv("ECORE_NO_SYSTEM_MODULES", "1", 0);
    setenv("DLOG_LEVEL", "error", 0);
    efreet_cache_disable();
    desktop::GiveToolkitWritableHome();
}

Eina_Bool OnSignal(void* /*data*/, int /*type*/, void* /*event*/)
{
    elm_exit();
    return ECORE_CALLBACK_RENEW;
}

void RunWindow(Display* display, const desktop::InstanceClaim& claim)
{
    SyncDemoWindow window;
    const RaiseRequests requests(display, claim, [&window] { window.Raise(); });
    Ecore_Event_Handler* signals = ecore_event_handler_add(ECORE_EVENT_SIGNAL_EXIT, OnSignal, nullptr);
    window.Raise();
    elm_run();
    ecore_event_handler_del(signals);
}

} // namespace

int main(int argc, char** argv)
{
    KeepQuiet();
    Display* display = desktop::OwnDisplay();
    if (display == nullptr) {
        std::fputs("VQMCompanion: cannot open the display that DISPLAY names\n", stderr);
        return kCouldNotRun;
    }
    const desktop::InstanceClaim claim(display, kCompanionId);
    if (claim.OtherInstance()) {
        desktop::RequestLaunch(display, *claim.OtherInstance());
        return EXIT_SUCCESS;
    }
    if (elm_init(argc, argv) <= 0) {
        std::fputs("VQMCompanion: cannot start the toolkit\n", stderr);
        return kCouldNotRun;
    }
    RunWindow(display, claim);
    elm_shutdown();
    return EXIT_SUCCESS;
}
