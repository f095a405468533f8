#pragma once

#include <optional>
#include <string>

#include "Platform/desktop/x11/Instance.h"

/// What the application does with a key.
enum class KeyUse {
    kNotRunning, ///< nothing: it does not run
    kNeither,    ///< nothing: its key table or the keyboard lacks the key
    kTaken,      ///< it wanted the key, but another program has taken it
    kHandedBack, ///< it took the key and handed it back
    kHeld,       ///< it holds the key
};

/// What `instance`, the running application if there is one, does with the key of this keysym name.
KeyUse UseOfKey(const std::optional<desktop::InstanceFacts>& instance, const std::string& key);
