#include "Platform/desktop/base/SettingsWatch.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <Ecore.h>
#include <memory>
#include <string>
#include <sys/inotify.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include "Platform/desktop/base/FileDescriptor.h"
#include "Platform/desktop/base/PlatformLog.h"
#include "Platform/desktop/base/SettingCallbacks.h"
#include "Platform/desktop/base/SettingsStore.h"

namespace desktop {

namespace {

/// After the watched folder went away: whoever removes it gets the time to finish.
constexpr double kFirstRetrySeconds = 0.2;
constexpr double kLongestRetrySeconds = 60;

constexpr std::size_t kEventBuffer = 4096;

/// The watched keys of one folder. The folder is watched, as each write puts another file in a
/// key's place.
///
/// Through inotify itself: of two Ecore monitors of one folder only one is told, and one whose
/// folder goes away is freed by Ecore, or not, depending on how it went.
class FolderWatch {
public:
    explicit FolderWatch(std::string folder) : folder_(std::move(folder)) {}
    FolderWatch(const FolderWatch&) = delete;
    FolderWatch& operator=(const FolderWatch&) = delete;
    ~FolderWatch()
    {
        Disarm();
        if (retry_ != nullptr) {
            ecore_timer_del(retry_);
        }
    }

    const std::string& Folder() const { return folder_; }

    bool Add(std::string_view key, vconf_callback_fn callback, void* userData)
    {
        // Watched before it is read: a change in between must not be lost.
        if (!events_.IsOpen() && retry_ == nullptr && !Arm(key)) {
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
    static Eina_Bool OnReadable(void* data, Ecore_Fd_Handler* /*handler*/)
    {
        auto* self = static_cast<FolderWatch*>(data);
        alignas(inotify_event) std::array<char, kEventBuffer> buffer;
        const ssize_t size = read(self->events_.Get(), buffer.data(), buffer.size());
        for (ssize_t at = 0; at < size;) {
            const auto* event = reinterpret_cast<const inotify_event*>(buffer.data() + at);
            self->Take(event->mask, event->len > 0 ? event->name : "");
            at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
        }
        return ECORE_CALLBACK_RENEW;
    }

    void Take(std::uint32_t mask, std::string_view name)
    {
        if ((mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT)) != 0) {
            RetryAfter(kFirstRetrySeconds);
        } else if ((mask & IN_Q_OVERFLOW) != 0) {
            DeliverAll();
        } else {
            Deliver(name);
        }
    }

    static Eina_Bool OnRetry(void* data)
    {
        auto* self = static_cast<FolderWatch*>(data);
        self->retry_ = nullptr;
        self->Disarm();
        if (self->keys_.empty()) {
            return ECORE_CALLBACK_CANCEL;
        }
        if (self->Arm(self->keys_.front()->Key())) {
            self->DeliverAll();
        } else {
            if (self->retrySeconds_ <= kFirstRetrySeconds) {
                PLATFORM_LOG(DLOG_ERROR, "changes in %s go unnoticed for now: %s", self->folder_.c_str(),
                             LastSettingsProblem().c_str());
            }
            self->RetryAfter(std::min(2 * self->retrySeconds_, kLongestRetrySeconds));
        }
        return ECORE_CALLBACK_CANCEL;
    }

    bool Arm(std::string_view key)
    {
        if (!MakeSettingsFolderOf(key)) {
            return false;
        }
        constexpr std::uint32_t kChanges = IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE;
        FileDescriptor events(inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
        if (!events.IsOpen() ||
            inotify_add_watch(events.Get(), folder_.c_str(), kChanges | IN_DELETE_SELF | IN_MOVE_SELF) == -1) {
            NoteSettingsProblem(folder_, errno);
            return false;
        }
        events_ = std::move(events);
        readable_ = ecore_main_fd_handler_add(events_.Get(), ECORE_FD_READ, OnReadable, this, nullptr, nullptr);
        return true;
    }

    void Disarm()
    {
        if (readable_ != nullptr) {
            ecore_main_fd_handler_del(std::exchange(readable_, nullptr));
        }
        events_ = FileDescriptor();
    }

    void RetryAfter(double seconds)
    {
        if (retry_ == nullptr) {
            retrySeconds_ = seconds;
            retry_ = ecore_timer_add(seconds, OnRetry, this);
        }
    }

    void Deliver(std::string_view name)
    {
        for (SettingCallbacks* callbacks : PresentKeys()) {
            const std::string_view key = callbacks->Key();
            if (key.substr(key.rfind('/') + 1) == name) {
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
    FileDescriptor events_;
    Ecore_Fd_Handler* readable_ = nullptr;
    Ecore_Timer* retry_ = nullptr;
    double retrySeconds_ = 0;
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
    auto watch = std::make_unique<FolderWatch>(folder);
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
