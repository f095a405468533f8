// The watch of a library that is built without the toolkit: there is no main loop on which changes
// could arrive.

#include <cerrno>

#include "Platform/desktop/base/SettingsStore.h"
#include "Platform/desktop/base/SettingsWatch.h"

namespace desktop {

bool AddSettingWatch(std::string_view key, vconf_callback_fn /*callback*/, void* /*userData*/)
{
    if (const auto file = SettingsFile(key)) {
        NoteSettingsProblem(*file, ENOTSUP);
    }
    return false;
}

bool RemoveSettingWatch(std::string_view /*key*/, vconf_callback_fn /*callback*/)
{
    return false;
}

} // namespace desktop
