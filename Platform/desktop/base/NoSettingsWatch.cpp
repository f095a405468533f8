// The watch of a library that is built without the toolkit: there is no main loop on which changes
// could arrive.

#include <string>

#include "Platform/desktop/base/PlatformLog.h"
#include "Platform/desktop/base/SettingsWatch.h"

namespace desktop {

bool AddSettingWatch(std::string_view key, vconf_callback_fn /*callback*/, void* /*userData*/)
{
    PLATFORM_LOG(DLOG_ERROR, "%s: changes are not reported: this library was built without VQM_ECORE_WATCH",
                 std::string(key).c_str());
    return false;
}

bool RemoveSettingWatch(std::string_view /*key*/, vconf_callback_fn /*callback*/)
{
    return false;
}

} // namespace desktop
