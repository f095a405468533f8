#include "Platform/desktop/app/ToolkitSetup.h"

#include <chrono>
#include <clocale>
#include <cstdlib>

#include <Efreet.h>

#include "Platform/desktop/base/PlatformLog.h"
#include "Platform/desktop/base/StandardDescriptors.h"
#include "Platform/desktop/bus/BusProbe.h"
#include "Platform/desktop/environment/OwnEnvironment.h"
#include "Platform/desktop/environment/ToolkitHome.h"
#include "Platform/desktop/x11/KeySymbols.h"

namespace desktop {

namespace {

constexpr char kSystemBusAddress[] = "unix:path=/run/dbus/system_bus_socket";
constexpr std::chrono::milliseconds kSystemBusTimeout{250};

bool SystemBusAnswers()
{
    const char* address = std::getenv("DBUS_SYSTEM_BUS_ADDRESS");
    const bool given = address != nullptr && *address != '\0';
    return BusAnswers(given ? address : kSystemBusAddress, kSystemBusTimeout);
}

} // namespace

void PrepareForToolkit()
{
    KeepStandardErrorFromBlocking(); // Xlib and the toolkit write there too
    if (!NamesWritableFolder("XDG_RUNTIME_DIR") && !NamesWritableFolder("HOME")) {
        PLATFORM_LOG(DLOG_ERROR, "neither XDG_RUNTIME_DIR nor HOME names a folder that can be written: "
                                 "the toolkit cannot start");
        std::_Exit(EXIT_FAILURE);
    }
    GiveToolkitWritableHome();
    // Keys come from X, so neither another display server nor a virtual screen helps.
    SetOwnVariable("ELM_DISPLAY", "x11");
    SetOwnVariable("ELM_ENGINE", "software_x11");
    if (std::getenv("ECORE_NO_SYSTEM_MODULES") == nullptr && !SystemBusAnswers()) {
        // These modules would report the missing bus with hundreds of lines.
        SetOwnVariable("ECORE_NO_SYSTEM_MODULES", "1");
    }
    // Otherwise every start spawns efreetd and its cache builders.
    efreet_cache_disable();
    // As the toolkit does later. Xlib reads a locale's tables when it first works in that locale, and the key
    // symbols below would make it read those of "C" as well.
    std::setlocale(LC_CTYPE, "");
    if (!AddToolKeySymbols()) {
        PLATFORM_LOG(DLOG_WARN, "Xlib cannot be taught the tool keys' symbols: they will not be seen");
    }
}

} // namespace desktop
