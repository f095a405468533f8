#include "Platform/desktop/base/SettingCallbacks.h"

#include <algorithm>
#include <utility>

namespace desktop {

void SettingCallbacks::Add(vconf_callback_fn callback, void* userData)
{
    if (registrations_.empty()) {
        seen_ = CurrentSettingVersion(key_);
    }
    registrations_.push_back({callback, userData, ++lastNumber_});
}

bool SettingCallbacks::Remove(vconf_callback_fn callback)
{
    const auto found = std::find_if(registrations_.begin(), registrations_.end(),
                                    [callback](const Registration& r) { return r.callback == callback; });
    if (found == registrations_.end()) {
        return false;
    }
    registrations_.erase(found);
    return true;
}

void SettingCallbacks::Deliver()
{
    SettingVersion now = CurrentSettingVersion(key_);
    if (now == seen_) {
        return;
    }
    seen_ = std::move(now);
    _keynode_t node{key_, seen_.value ? ParseSettingNumber(*seen_.value).value_or(0) : 0};

    ++delivering_;
    const std::vector<Registration> present = registrations_; // callbacks may add and remove
    for (const Registration& registration : present) {
        if (IsRegistered(registration.number)) {
            registration.callback(&node, registration.userData);
        }
    }
    --delivering_;
}

bool SettingCallbacks::IsRegistered(unsigned long long number) const
{
    return std::any_of(registrations_.begin(), registrations_.end(),
                       [number](const Registration& r) { return r.number == number; });
}

} // namespace desktop
