#pragma once

#include <string>
#include <string_view>
#include <vconf.h>
#include <vector>

#include "Platform/desktop/base/SettingsStore.h"

/// The node that a change callback receives.
struct _keynode_t {
    std::string name;
    int number;
};

namespace desktop {

/// The callbacks of one key, and the version of it that they saw last. Main thread only.
class SettingCallbacks {
public:
    explicit SettingCallbacks(std::string_view key) : key_(key) {}

    const std::string& Key() const { return key_; }

    /// The value at the time of the first registration does not count as a change.
    void Add(vconf_callback_fn callback, void* userData);

    /// Ends the oldest registration of the callback; false when there is none.
    bool Remove(vconf_callback_fn callback);

    /// Runs the callbacks if the key's version differs from the one they saw last. One write can be
    /// announced twice, and the first write's announcement can arrive after a second write.
    void Deliver();

    /// No callback is left and none is running.
    bool IsIdle() const { return registrations_.empty() && delivering_ == 0; }

private:
    struct Registration {
        vconf_callback_fn callback;
        void* userData;
        unsigned long long number;
    };

    bool IsRegistered(unsigned long long number) const;

    std::string key_;
    SettingVersion seen_;
    std::vector<Registration> registrations_;
    unsigned long long lastNumber_ = 0;
    int delivering_ = 0;
};

} // namespace desktop
