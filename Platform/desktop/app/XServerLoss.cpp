#include "Platform/desktop/app/XServerLoss.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <unistd.h>

#include <Ecore_X.h>
#include <X11/Xlib.h>

#include "Platform/desktop/app/Popups.h"
#include "Platform/desktop/base/PlatformLog.h"

namespace desktop {

namespace {

/// The process ends after this time even if popups have not been restored.
constexpr std::chrono::seconds kRestoreTimeout{4};

void LeaveWithoutServer(void* /*data*/)
{
    LeaveAtOnce("the connection to the X server is lost");
}

int OnConnectionLost(Display* /*display*/)
{
    LeaveAtOnce("the connection to the X server is lost");
}

} // namespace

void LeaveAtOnce(const char* reason)
{
    std::signal(SIGALRM, SIG_DFL);
    alarm(static_cast<unsigned int>(kRestoreTimeout.count()));
    RestorePopupsNow();
    PLATFORM_LOG(DLOG_ERROR, "%s: the application ends", reason);
    _exit(EXIT_FAILURE);
}

void ExitWhenXServerIsLost()
{
    XSetIOErrorHandler(OnConnectionLost);
    ecore_x_io_error_handler_set(LeaveWithoutServer, nullptr);
}

} // namespace desktop
