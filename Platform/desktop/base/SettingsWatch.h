#pragma once

#include <string_view>
#include <vconf.h>

#include "Platform/desktop/base/Result.h"

/// Change callbacks on settings, run on the Ecore main loop. Main thread only.
///
/// Each write of a key calls each of its callbacks once, with the value that the store holds by then;
/// writes in quick succession may share a call. The last value is always delivered. Callbacks may
/// register and unregister callbacks.
///
/// The first registration initialises Ecore for good, because the last one may end inside the loop.
namespace desktop {

/// Registers a callback, which must not be null. Fails for a refused key, and where the system gives no
/// watch of the key's folder.
Result<void> AddSettingWatch(std::string_view key, vconf_callback_fn callback, void* userData);

/// Ends the oldest registration of the callback on the key; false when there is none.
bool RemoveSettingWatch(std::string_view key, vconf_callback_fn callback);

} // namespace desktop
