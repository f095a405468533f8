#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <unistd.h>

#include <Efreet.h>
#include <Elementary.h>

#include "Common/VQMConfig.h"
#include "Companion/CompanionWindow.h"
#include "Platform/desktop/base/StandardDescriptors.h"
#include "Platform/desktop/environment/EndSignals.h"
#include "Platform/desktop/environment/ToolkitHome.h"
#include "Platform/desktop/x11/Instance.h"
#include "Platform/desktop/x11/XConnection.h"

namespace {

constexpr char kCompanionId[] = VQM_APP_ID ".gui";
constexpr int kCouldNotRun = 3;
/// An instance answers only once its start-up is over.
constexpr std::chrono::seconds kAnswerTimeout{30};

/// The companion needs no power or locale daemons and no index of the installed applications, and its
/// reads of the setting must not fill the log that it shares with the application.
void KeepQuiet()
{
    setenv("ECORE_NO_SYSTEM_MODULES", "1", 0);
    setenv("DLOG_LEVEL", "error", 0);
    efreet_cache_disable();
    desktop::GiveToolkitWritableHome();
}

[[noreturn]] void LeaveAtOnce(const char* reason)
{
    std::fprintf(stderr, "VQMCompanion: %s\n", reason);
    _exit(kCouldNotRun);
}

/// Becomes the one companion of the display; false when another one runs and comes forward instead.
/// Waits for one that is about to end.
bool BecomeTheCompanion(Display* display, std::unique_ptr<desktop::InstanceClaim>& claim)
{
    claim = std::make_unique<desktop::InstanceClaim>(display, kCompanionId);
    while (claim->OtherInstance()) {
        switch (desktop::RequestLaunch(display, *claim->OtherInstance(), kAnswerTimeout)) {
        case desktop::LaunchAnswer::kTold:
            return false;
        case desktop::LaunchAnswer::kSilent:
            std::fputs("VQMCompanion: the one that runs already does not answer\n", stderr);
            std::exit(kCouldNotRun);
        case desktop::LaunchAnswer::kGone:
            claim = std::make_unique<desktop::InstanceClaim>(display, kCompanionId);
        }
    }
    return true;
}

struct Running {
    Display* display;
    desktop::InstanceClaim& claim;
    CompanionWindow& window;
};

/// Answers the requests of later starts.
Eina_Bool OnReadable(void* data, Ecore_Fd_Handler* /*handler*/)
{
    const auto& [display, claim, window] = *static_cast<const Running*>(data);
    while (XPending(display) > 0) {
        XEvent event;
        XNextEvent(display, &event);
        // A process that is about to end does not answer: the asking process is its successor.
        if (claim.IsLaunchRequest(event) && !desktop::EndRequested()) {
            claim.AnswerLaunchRequest(event);
            window.Raise();
        }
    }
    return ECORE_CALLBACK_RENEW;
}

/// Returns whether a check still runs when the window has gone.
bool RunWindow(Display* display, desktop::InstanceClaim& claim)
{
    CompanionWindow window;
    window.Raise();
    Running running = {display, claim, window};
    const std::unique_ptr<Ecore_Fd_Handler, void* (*)(Ecore_Fd_Handler*)> handler(
        ecore_main_fd_handler_add(ConnectionNumber(display), ECORE_FD_READ, OnReadable, &running, nullptr, nullptr),
        ecore_main_fd_handler_del);
    OnReadable(&running, handler.get()); // what Xlib has read already does not make the connection readable
    desktop::EndMainLoopOnSignal(elm_exit);
    elm_run();
    desktop::LimitTeardown();
    // Before the teardown, so that the next start can take over at once.
    claim.GiveUp();
    return window.IsChecking();
}

} // namespace

int main(int argc, char** argv)
{
    desktop::KeepStandardErrorFromBlocking();
    KeepQuiet();
    Display* display = desktop::OwnDisplay();
    if (display == nullptr) {
        std::fputs("VQMCompanion: cannot open the display that DISPLAY names\n", stderr);
        return kCouldNotRun;
    }
    std::unique_ptr<desktop::InstanceClaim> claim;
    if (!BecomeTheCompanion(display, claim)) {
        return EXIT_SUCCESS;
    }
    desktop::CatchEndSignals(LeaveAtOnce); // until here they end the process as they do by default
    if (elm_init(argc, argv) <= 0) {
        std::fputs("VQMCompanion: cannot start the toolkit\n", stderr);
        return kCouldNotRun;
    }
    bool isChecking = false;
    try {
        isChecking = RunWindow(display, *claim);
    } catch (const std::runtime_error& error) {
        std::fprintf(stderr, "VQMCompanion: %s\n", error.what());
        return kCouldNotRun;
    }
    elm_shutdown();
    if (isChecking) {
        _exit(EXIT_SUCCESS); // what it uses must not be taken down under it
    }
    return EXIT_SUCCESS;
}
