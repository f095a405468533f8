// The watch of a library that is built without the toolkit: there is no main loop on which changes
// could arrive.

#include <string>

#include "Platform/desktop/base/PlatformLog.h"
#include "Platform/desktop/base/SettingsWatch.h"

namespace desktop {

namespace {

constexpr char kReason[] = "this library was built without VQM_ECORE_WATCH";

} // namespace

Result<void> AddSettingWatch(std::string_view key, vconf_callback_fn /*callback*/, void* /*userData*/)
{
    // Logged as well: the C interface returns a bare -1, which looks like a fault of the store.
    PLATFORM_LOG(DLOG_ERROR, "%s: changes are not reported: %s", std::string(key).c_str(), kReason);
    return Error{kReason};
}

bool RemoveSettingWatch(std::string_view /*key*/, vconf_callback_fn /*callback*/)
{
    return false;
}

} // namespace desktop
