#include "Platform/desktop/app/XServerLoss.h"

#include <cstdlib>
#include <unistd.h>

#include <Ecore_X.h>
#include <X11/Xlib.h>

#include "Platform/desktop/app/PopupInhibitor.h"
#include "Platform/desktop/base/PlatformLog.h"

namespace desktop {

namespace {

/// Popups must come back within this time, or the process ends without.
constexpr unsigned int kPatienceInSeconds = 4;

[[noreturn]] void Leave(void* /*data*/)
{
    alarm(kPatienceInSeconds);
    RestorePopupsNow();
    PLATFORM_LOG(DLOG_ERROR, "the connection to the X server is lost: the application ends");
    _exit(EXIT_FAILURE);
}

int OnConnectionLost(Display* /*display*/)
{
    Leave(nullptr);
}

} // namespace

void ExitWhenXServerIsLost()
{
    XSetIOErrorHandler(OnConnectionLost);
    ecore_x_io_error_handler_set(Leave, nullptr);
}

} // namespace desktop
