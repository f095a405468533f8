#include "Platform/desktop/base/SettingsWatch.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <Ecore.h>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Platform/desktop/base/PlatformLog.h"
#include "Platform/desktop/base/SettingCallbacks.h"
#include "Platform/desktop/base/SettingsPath.h"
#include "Platform/desktop/base/SettingsStore.h"

namespace desktop {

namespace {

/// The unit of Ecore's timers.
using Seconds = std::chrono::duration<double>;

/// While the path cannot be watched.
constexpr Seconds kFirstRetryDelay{0.2};
constexpr Seconds kLongestRetryDelay{60};

/// The time that a writer which keeps its file open has to write the whole value.
constexpr Seconds kWritingTime{0.1};

/// The watched keys of one folder. The folder is watched and not the files, because each write replaces
/// a key's file by another.
///
/// It uses inotify directly: of two Ecore monitors of one folder only one receives the events, and
/// whether Ecore frees a monitor whose folder disappears depends on how it disappeared.
class FolderWatch {
public:
    /// `own` is the number of the path's last folders that belong to the store.
    FolderWatch(std::string folder, std::size_t own) : folder_(std::move(folder)), own_(own) {}
    FolderWatch(const FolderWatch&) = delete;
    FolderWatch& operator=(const FolderWatch&) = delete;
    ~FolderWatch()
    {
        Disarm();
        for (Ecore_Timer* timer : {retry_, writing_}) {
            if (timer != nullptr) {
                ecore_timer_del(timer);
            }
        }
    }

    const std::string& Folder() const { return folder_; }

    Result<void> Add(std::string_view key, vconf_callback_fn callback, void* userData)
    {
        // Watched before it is read: a change in between must not be lost.
        if (!path_) {
            if (Result<void> armed = Arm(); !armed) {
                Disarm();
                return armed;
            }
        }
        auto found = std::find_if(keys_.begin(), keys_.end(), [key](const auto& k) { return k->Key() == key; });
        if (found == keys_.end()) {
            found = keys_.insert(keys_.end(), std::make_unique<SettingCallbacks>(key));
        }
        (*found)->Add(callback, userData);
        return {};
    }

    bool Remove(std::string_view key, vconf_callback_fn callback)
    {
        return std::any_of(keys_.begin(), keys_.end(),
                           [=](const auto& k) { return k->Key() == key && k->Remove(callback); });
    }

    bool IsIdle() const
    {
        return std::all_of(keys_.begin(), keys_.end(), [](const auto& k) { return k->IsIdle(); });
    }

private:
    using Event = SettingsPath::Event;

    static Eina_Bool OnReadable(void* data, Ecore_Fd_Handler* /*handler*/)
    {
        auto* self = static_cast<FolderWatch*>(data);
        const std::vector<Event> events = self->path_->Read();
        const bool changed = std::any_of(events.begin(), events.end(),
                                         [](const Event& event) { return event.kind == Event::Kind::kPathChanged; });
        if (changed) {
            self->FollowPathAnew(kFirstRetryDelay);
            return ECORE_CALLBACK_CANCEL; // that handler has been replaced
        }
        for (const Event& event : events) {
            self->Take(event);
        }
        return ECORE_CALLBACK_RENEW;
    }

    void Take(const Event& event)
    {
        if (event.kind == Event::Kind::kOverflow) {
            DeliverAll();
        } else if (event.kind == Event::Kind::kStored) {
            Deliver(event.entry);
        } else if (writing_ == nullptr && IsWatched(event.entry)) {
            writing_ = ecore_timer_add(kWritingTime.count(), OnWritten, this);
        }
    }

    static Eina_Bool OnWritten(void* data)
    {
        auto* self = static_cast<FolderWatch*>(data);
        self->writing_ = nullptr;
        self->DeliverAll();
        return ECORE_CALLBACK_CANCEL;
    }

    static Eina_Bool OnRetry(void* data)
    {
        auto* self = static_cast<FolderWatch*>(data);
        self->retry_ = nullptr;
        self->FollowPathAnew(std::min(2 * self->retryDelay_, kLongestRetryDelay));
        return ECORE_CALLBACK_CANCEL;
    }

    void FollowPathAnew(Seconds retryDelay)
    {
        // The loop forgets a handler late: until then its descriptor's number must not come again.
        const std::unique_ptr<SettingsPath> old = std::move(path_);
        Disarm();
        const Result<void> armed = Arm();
        if (!armed && retry_ == nullptr) {
            if (retryDelay <= kFirstRetryDelay) {
                PLATFORM_LOG(DLOG_ERROR, "changes in %s go unnoticed for now: %s", folder_.c_str(),
                             armed.Error().text.c_str());
            }
            retryDelay_ = retryDelay;
            retry_ = ecore_timer_add(retryDelay.count(), OnRetry, this);
        }
        DeliverAll();
    }

    /// Watches the part of the path that can be watched, even if this fails.
    Result<void> Arm()
    {
        path_ = std::make_unique<SettingsPath>(folder_, own_);
        Result<void> watched = path_->Watch();
        if (path_->Descriptor() >= 0) {
            readable_ =
                ecore_main_fd_handler_add(path_->Descriptor(), ECORE_FD_READ, OnReadable, this, nullptr, nullptr);
        }
        return watched;
    }

    void Disarm()
    {
        if (readable_ != nullptr) {
            ecore_main_fd_handler_del(std::exchange(readable_, nullptr));
        }
        path_.reset();
    }

    bool IsWatched(std::string_view name) const
    {
        return std::any_of(keys_.begin(), keys_.end(), [=](const auto& key) { return NameOf(*key) == name; });
    }

    static std::string_view NameOf(const SettingCallbacks& callbacks)
    {
        const std::string_view key = callbacks.Key();
        return key.substr(key.rfind('/') + 1);
    }

    void Deliver(std::string_view name)
    {
        for (SettingCallbacks* callbacks : PresentKeys()) {
            if (NameOf(*callbacks) == name) {
                callbacks->Deliver();
            }
        }
    }

    void DeliverAll()
    {
        for (SettingCallbacks* callbacks : PresentKeys()) {
            callbacks->Deliver();
        }
    }

    /// A copy, because a callback may add keys. The keys live as long as the watch.
    std::vector<SettingCallbacks*> PresentKeys() const
    {
        std::vector<SettingCallbacks*> present(keys_.size());
        std::transform(keys_.begin(), keys_.end(), present.begin(), [](const auto& key) { return key.get(); });
        return present;
    }

    std::string folder_;
    std::size_t own_;
    std::unique_ptr<SettingsPath> path_;
    Ecore_Fd_Handler* readable_ = nullptr;
    Ecore_Timer* retry_ = nullptr;
    Seconds retryDelay_{};
    Ecore_Timer* writing_ = nullptr;
    std::vector<std::unique_ptr<SettingCallbacks>> keys_;
};

using Watches = std::vector<std::unique_ptr<FolderWatch>>;

/// Never destroyed: at exit the loop that its watches depend on may already be down.
Watches& AllWatches()
{
    static auto* watches = new Watches;
    return *watches;
}

/// Initialises Ecore without its modules for power and memory events, unless the program has
/// initialised it before. A watch does not need them, and without a system bus they fill the log.
bool InitialiseLoop()
{
    constexpr char kSwitch[] = "ECORE_NO_SYSTEM_MODULES";
    const bool mine = std::getenv(kSwitch) == nullptr;
    if (mine) {
        setenv(kSwitch, "1", 0);
    }
    const bool ready = ecore_init() > 0;
    if (mine) {
        unsetenv(kSwitch);
    }
    return ready;
}

bool LoopIsReady()
{
    static const bool ready = InitialiseLoop();
    return ready;
}

/// Deletes the watches without callbacks. It runs in the loop's next round, because a watch must not be
/// deleted while it calls.
void DropIdle(void* /*data*/)
{
    Watches& all = AllWatches();
    all.erase(std::remove_if(all.begin(), all.end(), [](const auto& watch) { return watch->IsIdle(); }), all.end());
}

} // namespace

Result<void> AddSettingWatch(std::string_view key, vconf_callback_fn callback, void* userData)
{
    const Result<std::string> file = SettingsFile(key);
    if (!file) {
        return file.Error();
    }
    if (!LoopIsReady()) {
        return Error{"the toolkit's main loop cannot be initialised"};
    }
    const std::string folder = file->substr(0, file->rfind('/'));
    Watches& all = AllWatches();
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const auto& watch) { return watch->Folder() == folder; });
    if (found != all.end()) {
        return (*found)->Add(key, callback, userData);
    }
    // The key's own folders and the settings folder.
    const auto own = static_cast<std::size_t>(std::count(key.begin(), key.end(), '/')) + 1;
    auto watch = std::make_unique<FolderWatch>(folder, own);
    Result<void> added = watch->Add(key, callback, userData);
    if (added) {
        all.push_back(std::move(watch));
    }
    return added;
}

bool RemoveSettingWatch(std::string_view key, vconf_callback_fn callback)
{
    Watches& all = AllWatches();
    const auto found =
        std::find_if(all.begin(), all.end(), [=](const auto& watch) { return watch->Remove(key, callback); });
    if (found == all.end()) {
        return false;
    }
    if ((*found)->IsIdle()) {
        ecore_job_add(DropIdle, nullptr);
    }
    return true;
}

} // namespace desktop
