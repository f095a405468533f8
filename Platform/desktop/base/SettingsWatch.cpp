#include "Platform/desktop/base/SettingsWatch.h"

#include <algorithm>
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

/// Where the path cannot be watched for now.
constexpr double kFirstRetrySeconds = 0.2;
constexpr double kLongestRetrySeconds = 60;

/// A writer that keeps its file open gets so long to write the whole value.
constexpr double kWritingSeconds = 0.1;

/// The watched keys of one folder. The folder is watched, as each write puts another file in a
/// key's place.
///
/// Through inotify itself: of two Ecore monitors of one folder only one is told, and one whose
/// folder goes away is freed by Ecore, or not, depending on how it went.
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

    bool Add(std::string_view key, vconf_callback_fn callback, void* userData)
    {
        // Watched before it is read: a change in between must not be lost.
        if (!path_ && !Arm()) {
            Disarm();
            return false;
        }
        auto found = std::find_if(keys_.begin(), keys_.end(), [key](const auto& k) { return k->Key() == key; });
        if (found == keys_.end()) {
            found = keys_.insert(keys_.end(), std::make_unique<SettingCallbacks>(key));
        }
        (*found)->Add(callback, userData);
        return true;
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
            self->FollowPathAnew(kFirstRetrySeconds);
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
            writing_ = ecore_timer_add(kWritingSeconds, OnWritten, this);
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
        self->FollowPathAnew(std::min(2 * self->retrySeconds_, kLongestRetrySeconds));
        return ECORE_CALLBACK_CANCEL;
    }

    void FollowPathAnew(double retrySeconds)
    {
        // The loop forgets a handler late: until then its descriptor's number must not come again.
        const std::unique_ptr<SettingsPath> old = std::move(path_);
        Disarm();
        if (!Arm() && retry_ == nullptr) {
            if (retrySeconds <= kFirstRetrySeconds) {
                PLATFORM_LOG(DLOG_ERROR, "changes in %s go unnoticed for now: %s", folder_.c_str(),
                             LastSettingsProblem().c_str());
            }
            retrySeconds_ = retrySeconds;
            retry_ = ecore_timer_add(retrySeconds, OnRetry, this);
        }
        DeliverAll();
    }

    /// What can be watched of the path is watched, also when this fails.
    bool Arm()
    {
        path_ = std::make_unique<SettingsPath>(folder_, own_);
        if (path_->Descriptor() >= 0) {
            readable_ =
                ecore_main_fd_handler_add(path_->Descriptor(), ECORE_FD_READ, OnReadable, this, nullptr, nullptr);
        }
        if (path_->Error() != 0) {
            NoteSettingsProblem(path_->Place(), path_->Error());
        }
        return path_->Error() == 0;
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

    /// A callback may add keys; none goes before the watch does.
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
    double retrySeconds_ = 0;
    Ecore_Timer* writing_ = nullptr;
    std::vector<std::unique_ptr<SettingCallbacks>> keys_;
};

using Watches = std::vector<std::unique_ptr<FolderWatch>>;

/// Never destroyed: the loop that its watches hang on may be down by then.
Watches& AllWatches()
{
    static auto* watches = new Watches;
    return *watches;
}

/// Ecore, where nobody has initialised it yet, without its modules for power and memory events:
/// a watch has no use for them, and they fill the log where there is no system bus.
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

/// A watch must not be deleted while it calls, so this waits for the loop's next round.
void DropIdle(void* /*data*/)
{
    Watches& all = AllWatches();
    all.erase(std::remove_if(all.begin(), all.end(), [](const auto& watch) { return watch->IsIdle(); }), all.end());
}

} // namespace

bool AddSettingWatch(std::string_view key, vconf_callback_fn callback, void* userData)
{
    const auto file = SettingsFile(key);
    if (callback == nullptr || !file || !LoopIsReady()) {
        return false;
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
    if (!watch->Add(key, callback, userData)) {
        return false;
    }
    all.push_back(std::move(watch));
    return true;
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
