// The tool's own watch on settings, in the place of the platform's, which runs on the toolkit's main
// loop: a tool that waits for a file to change needs no toolkit.

#include "Platform/desktop/base/SettingsWatch.h"

#include <algorithm>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "Diagnostics/Watch/FileWatch.h"
#include "Platform/desktop/base/SettingCallbacks.h"
#include "Platform/desktop/base/SettingsStore.h"
#include "Tools/Terminal/Terminal.h"
#include "Tools/Watch/MainLoop.h"

namespace desktop {

namespace {

class Watched {
public:
    explicit Watched(MainLoop& loop)
    {
        loop.OnReadable(files_.Descriptor(), [this] {
            if (files_.TakeChanges()) {
                OnChange();
            }
        });
    }

    void Add(std::string_view key, const std::string& file, vconf_callback_fn callback, void* userData)
    {
        // Watched before it is read: a change in between must not be lost.
        folders_.insert(file.substr(0, file.rfind('/')));
        Watch();
        keys_.push_back(std::make_unique<SettingCallbacks>(key));
        keys_.back()->Add(callback, userData);
    }

    bool Remove(std::string_view key, vconf_callback_fn callback)
    {
        return std::any_of(keys_.begin(), keys_.end(),
                           [=](const auto& k) { return k->Key() == key && k->Remove(callback); });
    }

private:
    void Watch()
    {
        files_.Watch(folders_);
        for (const std::string& refusal : files_.TakeRefusals()) {
            PrintError("note: " + refusal);
        }
    }

    void OnChange()
    {
        Watch();
        for (const auto& key : keys_) {
            key->Deliver();
        }
    }

    FileWatch files_;
    std::set<std::string> folders_;
    std::vector<std::unique_ptr<SettingCallbacks>> keys_; ///< one for each registration
};

/// Never destroyed: the loop ends before.
Watched*& TheWatch()
{
    static Watched* watched = nullptr;
    return watched;
}

} // namespace

Result<void> AddSettingWatch(std::string_view key, vconf_callback_fn callback, void* userData)
{
    const Result<std::string> file = SettingsFile(key);
    if (!file) {
        return file.Error();
    }
    MainLoop* const loop = MainLoop::Current();
    if (loop == nullptr) {
        return Error{"no main loop runs that could deliver changes"};
    }
    if (TheWatch() == nullptr) {
        TheWatch() = new Watched(*loop);
    }
    TheWatch()->Add(key, *file, callback, userData);
    return {};
}

bool RemoveSettingWatch(std::string_view key, vconf_callback_fn callback)
{
    return TheWatch() != nullptr && TheWatch()->Remove(key, callback);
}

} // namespace desktop
