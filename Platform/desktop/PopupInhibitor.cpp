#include "Platform/desktop/PopupInhibitor.h"

#include <unistd.h>
#include <utility>

#include "Platform/desktop/NotificationDaemon.h"
#include "Platform/desktop/PlatformLog.h"

namespace desktop {

namespace {

constexpr char kReason[] = "No popups over the demonstration";

void LogSilence(const std::string& daemon)
{
    PLATFORM_LOG(DLOG_WARN, "the notification daemon %s does not answer: popups stay as they are", daemon.c_str());
}

} // namespace

PopupInhibitor::PopupInhibitor(std::string applicationId)
    : applicationId_(std::move(applicationId)), recordFile_(PopupRecordFile(applicationId_))
{
}

PopupInhibitor::~PopupInhibitor()
{
    Close();
}

bool PopupInhibitor::Open()
{
    return bus_.Join();
}

void PopupInhibitor::Close()
{
    End();
    bus_.Leave();
}

bool PopupInhibitor::Begin()
{
    if (bus_.Connection() == nullptr) {
        return false;
    }
    if (held_) {
        return true;
    }
    Watch(true);
    const std::optional<std::string> daemon = FindNotificationDaemon(bus_.Connection());
    if (!daemon) {
        PLATFORM_LOG(DLOG_INFO, "no notification daemon answers on the session bus: no popups to hold back yet");
        return false;
    }
    return Apply(*daemon);
}

void PopupInhibitor::End()
{
    Watch(false);
    if (!held_) {
        return;
    }
    const Held held = *std::exchange(held_, std::nullopt);
    NotificationDaemon daemon(bus_.Connection(), held.daemon);
    const DaemonAnswer answer = held.inhibited ? daemon.UnInhibit(held.cookie) : daemon.SetPaused(held.pausedBefore);
    if (answer == DaemonAnswer::kDone) {
        RemovePopupRecord(recordFile_);
        return;
    }
    // The record stays: it tells the next start what was found.
    PLATFORM_LOG(DLOG_WARN, "the notification daemon %s does not take popups back", held.daemon.c_str());
}

void PopupInhibitor::OnOwnerChanged(void* data, const char* /*name*/, const char* /*before*/, const char* now)
{
    auto* self = static_cast<PopupInhibitor*>(data);
    const std::string daemon(now != nullptr ? now : "");
    if (self->held_ && self->held_->daemon == daemon) {
        return;
    }
    if (self->held_) {
        self->held_.reset(); // it is gone, and with it what it held back
        RemovePopupRecord(self->recordFile_);
    }
    if (!daemon.empty()) {
        self->Apply(daemon);
    }
}

bool PopupInhibitor::Apply(const std::string& daemonName)
{
    NotificationDaemon daemon(bus_.Connection(), daemonName);
    std::uint32_t cookie = 0;
    switch (daemon.Inhibit(applicationId_.c_str(), kReason, cookie)) {
    case DaemonAnswer::kDone:
        held_ = Held{daemonName, true, cookie, false};
        Save(*held_); // for tools alone: the daemon ends it with our connection
        return true;
    case DaemonAnswer::kSilent:
        LogSilence(daemonName);
        return false;
    case DaemonAnswer::kRefused:
        break;
    }
    return ApplyPause(daemon);
}

bool PopupInhibitor::ApplyPause(NotificationDaemon& daemon)
{
    bool paused = false;
    switch (daemon.GetPaused(paused)) {
    case DaemonAnswer::kDone:
        break;
    case DaemonAnswer::kSilent:
        LogSilence(daemon.UniqueName());
        return false;
    case DaemonAnswer::kRefused:
        PLATFORM_LOG(DLOG_INFO, "the notification daemon cannot be held back: popups stay as they are");
        return false;
    }
    if (busIdentity_.empty()) {
        busIdentity_ = BusIdentity(bus_.Connection());
    }
    // Left by a process that was killed: the pause found now is that one's.
    const std::optional<PopupRecord> left = ReadPopupRecord(recordFile_);
    if (left && !left->inhibited && left->bus == busIdentity_ && left->daemon == daemon.UniqueName()) {
        paused = left->pausedBefore;
    }
    const Held held{daemon.UniqueName(), false, 0, paused};
    if (!Save(held)) {
        PLATFORM_LOG(DLOG_WARN, "no record can be kept in XDG_RUNTIME_DIR: popups stay as they are");
        return false;
    }
    switch (daemon.SetPaused(true)) {
    case DaemonAnswer::kDone:
        held_ = held;
        return true;
    case DaemonAnswer::kSilent:
        held_ = held; // it may still do it
        LogSilence(daemon.UniqueName());
        return false;
    case DaemonAnswer::kRefused:
        break;
    }
    RemovePopupRecord(recordFile_);
    PLATFORM_LOG(DLOG_WARN, "the notification daemon refuses to pause: popups stay as they are");
    return false;
}

bool PopupInhibitor::Save(const Held& held)
{
    return WritePopupRecord(recordFile_, {getpid(), busIdentity_, held.daemon, held.inhibited, held.pausedBefore});
}

void PopupInhibitor::Watch(bool watch)
{
    if (watch == watching_) {
        return;
    }
    watching_ = watch;
    if (watch) {
        eldbus_name_owner_changed_callback_add(bus_.Connection(), kNotificationsName, OnOwnerChanged, this, EINA_FALSE);
    } else {
        eldbus_name_owner_changed_callback_del(bus_.Connection(), kNotificationsName, OnOwnerChanged, this);
    }
}

} // namespace desktop
