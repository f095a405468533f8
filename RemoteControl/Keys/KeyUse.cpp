#include "RemoteControl/Keys/KeyUse.h"

#include <algorithm>
#include <vector>

namespace {

bool Contains(const std::vector<std::string>& names, const std::string& name)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

} // namespace

KeyUse UseOfKey(const std::optional<desktop::InstanceFacts>& instance, const std::string& key)
{
    if (!instance) {
        return KeyUse::kNotRunning;
    }
    if (Contains(instance->heldKeys, key)) {
        return KeyUse::kHeld;
    }
    if (Contains(instance->failedKeys, key)) {
        return KeyUse::kTaken;
    }
    return Contains(instance->releasedKeys, key) ? KeyUse::kHandedBack : KeyUse::kNeither;
}
