#pragma once

#include <string_view>
#include <vconf.h>

/// Change callbacks on settings, run on the Ecore main loop. Main thread only.
///
/// Each write of a key gives one call of each of its callbacks, with the value that stands in the
/// store by then; writes in quick succession may share one. The last value is always delivered.
/// Callbacks may register and unregister callbacks.
///
/// The first registration initialises Ecore for good: the last one may end inside the loop.
namespace desktop {

bool AddSettingWatch(std::string_view key, vconf_callback_fn callback, void* userData);

/// Ends the oldest registration of the callback on the key; false when there is none.
bool RemoveSettingWatch(std::string_view key, vconf_callback_fn callback);

} // namespace desktop
