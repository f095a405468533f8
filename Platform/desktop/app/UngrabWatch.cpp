#include "Platform/desktop/app/UngrabWatch.h"

#include <fcntl.h>
#include <memory>
#include <utility>

#include <Ecore.h>
#include <X11/extensions/record.h>
#include <X11/Xproto.h>

namespace desktop {

namespace {

/// The connection on which the reports arrive.
Display* reports = nullptr;
void (*onUngrab)() = nullptr;
bool reported = false;

XRecordContext CreateContext(Display* display)
{
    struct Free {
        void operator()(XRecordRange* range) const { XFree(range); }
    };
    const std::unique_ptr<XRecordRange, Free> range(XRecordAllocRange());
    if (range == nullptr) {
        return 0;
    }
    range->core_requests.first = X_UngrabKey;
    range->core_requests.last = X_UngrabKey;
    range->client_died = True;
    XRecordRange* ranges = range.get();
    XRecordClientSpec clients = XRecordAllClients;
    const XRecordContext context = XRecordCreateContext(display, 0, &clients, 1, &ranges, 1);
    // The context must exist before the other connection enables it.
    XSync(display, False);
    return context;
}

void OnReport(XPointer /*closure*/, XRecordInterceptData* data)
{
    // The report of the start counts too: a key may have been released before the watch took effect.
    reported = reported || data->category != XRecordEndOfData;
    XRecordFreeData(data);
}

/// Calls back once for all reports that arrived together: they only say that something happened.
void PassOn()
{
    if (std::exchange(reported, false)) {
        onUngrab();
    }
}

Eina_Bool OnReadable(void* /*data*/, Ecore_Fd_Handler* /*handler*/)
{
    XRecordProcessReplies(reports);
    PassOn();
    return ECORE_CALLBACK_RENEW;
}

} // namespace

void WatchForUngrabs(Display* display, void (*callback)())
{
    int major = 0;
    int minor = 0;
    if (std::exchange(onUngrab, callback) != nullptr || XRecordQueryVersion(display, &major, &minor) == False) {
        return;
    }
    reports = XOpenDisplay(DisplayString(display));
    const XRecordContext context = reports == nullptr ? 0 : CreateContext(display);
    if (context == 0) {
        return;
    }
    fcntl(ConnectionNumber(reports), F_SETFD, FD_CLOEXEC);
    ecore_main_fd_handler_add(ConnectionNumber(reports), ECORE_FD_READ, OnReadable, nullptr, nullptr, nullptr);
    // Waits for the first report, which says that the watch has taken effect.
    XRecordEnableContextAsync(reports, context, OnReport, nullptr);
    PassOn();
}

} // namespace desktop
