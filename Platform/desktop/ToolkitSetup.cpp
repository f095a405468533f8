#include "Platform/desktop/ToolkitSetup.h"

#include <cstdlib>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include <Efreet.h>

#include "Platform/desktop/BusProbe.h"
#include "Platform/desktop/KeySymbols.h"
#include "Platform/desktop/OwnEnvironment.h"
#include "Platform/desktop/PlatformLog.h"

namespace desktop {

namespace {

constexpr char kSystemBusAddress[] = "unix:path=/run/dbus/system_bus_socket";
constexpr int kBusPatienceInMilliseconds = 250;

bool SystemBusAnswers()
{
    const char* address = std::getenv("DBUS_SYSTEM_BUS_ADDRESS");
    const bool given = address != nullptr && *address != '\0';
    return BusAnswers(given ? address : kSystemBusAddress, kBusPatienceInMilliseconds);
}

bool IsPrivateFolder(const char* path)
{
    struct stat facts = {};
    return lstat(path, &facts) == 0 && S_ISDIR(facts.st_mode) && facts.st_uid == geteuid() &&
           (facts.st_mode & 07777) == 0700;
}

/// The toolkit aborts when it has no place for its runtime files. Where the session provides none,
/// a folder of the user's own in /tmp serves, the same one for each start.
bool EnsureRuntimeFolder()
{
    const char* given = std::getenv("XDG_RUNTIME_DIR");
    if (given != nullptr && access(given, W_OK | X_OK) == 0) {
        return true;
    }
    const std::string folder = "/tmp/runtime-" + std::to_string(geteuid());
    mkdir(folder.c_str(), 0700);
    if (!IsPrivateFolder(folder.c_str())) {
        PLATFORM_LOG(DLOG_ERROR, "XDG_RUNTIME_DIR names no folder that can be written, and %s is not ours alone",
                     folder.c_str());
        return false;
    }
    SetOwnVariable("XDG_RUNTIME_DIR", folder.c_str());
    return true;
}

} // namespace

void PrepareForToolkit()
{
    if (!EnsureRuntimeFolder()) {
        std::_Exit(EXIT_FAILURE);
    }
    // Keys come from X: neither another display server nor a virtual screen will do.
    SetOwnVariable("ELM_DISPLAY", "x11");
    SetOwnVariable("ELM_ENGINE", "software_x11");
    if (std::getenv("ECORE_NO_SYSTEM_MODULES") == nullptr && !SystemBusAnswers()) {
        // They would report the missing bus with hundreds of lines.
        SetOwnVariable("ECORE_NO_SYSTEM_MODULES", "1");
    }
    // Else every start spawns efreetd and its cache builders.
    efreet_cache_disable();
    if (!AddToolKeySymbols()) {
        PLATFORM_LOG(DLOG_WARN, "Xlib cannot be taught the tool keys' symbols: they will not be seen");
    }
}

} // namespace desktop
