#include "Platform/desktop/SessionBus.h"

#include <cstdlib>
#include <string_view>
#include <sys/stat.h>

#include "Platform/desktop/PlatformLog.h"

namespace desktop {

namespace {

constexpr std::string_view kLaunchesOne = "autolaunch:";

std::string_view FromEnvironment(const char* name)
{
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

} // namespace

std::string SessionBusAddress()
{
    const std::string_view address = FromEnvironment("DBUS_SESSION_BUS_ADDRESS");
    if (!address.empty()) {
        return address.find(kLaunchesOne) == std::string_view::npos ? std::string(address) : "";
    }
    const std::string_view folder = FromEnvironment("XDG_RUNTIME_DIR");
    const std::string path = std::string(folder) + "/bus";
    struct stat status {};
    if (folder.empty() || stat(path.c_str(), &status) == -1 || !S_ISSOCK(status.st_mode)) {
        return "";
    }
    return "unix:path=" + path;
}

bool SessionBus::Join()
{
    if (connection_ != nullptr) {
        return true;
    }
    const std::string address = SessionBusAddress();
    if (address.empty()) {
        PLATFORM_LOG(DLOG_INFO, "no session bus: popups stay as they are");
        return false;
    }
    initialised_ = initialised_ || eldbus_init() > 0;
    if (initialised_) {
        connection_ = eldbus_private_address_connection_get(address.c_str());
    }
    if (connection_ == nullptr) {
        PLATFORM_LOG(DLOG_WARN, "the session bus at %s cannot be joined: popups stay as they are", address.c_str());
    }
    return connection_ != nullptr;
}

void SessionBus::Leave()
{
    if (connection_ != nullptr) {
        eldbus_connection_unref(connection_);
        connection_ = nullptr;
    }
    if (initialised_) {
        eldbus_shutdown();
        initialised_ = false;
    }
}

} // namespace desktop
