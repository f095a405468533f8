#include "Platform/desktop/app/PopupInhibitor.h"

#include <unistd.h>
#include <utility>

#include "Platform/desktop/base/PlatformLog.h"
#include "Platform/desktop/bus/NotificationDaemon.h"

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
    if (!bus_.IsJoined()) {
        return false;
    }
    if (held_) {
        return true;
    }
    bus_.WatchOwner(kNotificationsName, [this](const std::string& owner) { OnDaemonChanged(owner); });
    const std::string daemon = bus_.OwnerOf(kNotificationsName);
    if (daemon.empty()) {
        PLATFORM_LOG(DLOG_INFO, "no notification daemon answers on the session bus: no popups to hold back yet");
        return false;
    }
    return Apply(daemon);
}

void PopupInhibitor::End()
{
    bus_.StopWatching();
    if (!held_) {
        return;
    }
    const Held held = *std::exchange(held_, std::nullopt);
    NotificationDaemon daemon(bus_, held.daemon);
    const BusAnswer answer = held.inhibited ? daemon.UnInhibit(held.cookie) : daemon.SetPaused(held.pausedBefore);
    if (answer == BusAnswer::kDone) {
        RemovePopupRecord(recordFile_);
        return;
    }
    // The record stays: it tells the next start what was found.
    PLATFORM_LOG(DLOG_WARN, "the notification daemon %s does not answer: popups stay held back until the next start",
                 held.daemon.c_str());
}

void PopupInhibitor::OnDaemonChanged(const std::string& daemon)
{
    if (held_ && held_->daemon == daemon) {
        return;
    }
    if (held_) {
        held_.reset(); // it is gone, and with it what it held back
        RemovePopupRecord(recordFile_);
    }
    if (!daemon.empty()) {
        Apply(daemon);
    }
}

bool PopupInhibitor::Apply(const std::string& daemonName)
{
    NotificationDaemon daemon(bus_, daemonName);
    std::uint32_t cookie = 0;
    switch (daemon.Inhibit(applicationId_.c_str(), kReason, cookie)) {
    case BusAnswer::kDone:
        held_ = Held{daemonName, true, cookie, false};
        Save(*held_); // for tools alone: the daemon ends it with our connection
        return true;
    case BusAnswer::kSilent:
        LogSilence(daemonName);
        return false;
    case BusAnswer::kRefused:
        break;
    }
    return ApplyPause(daemon);
}

bool PopupInhibitor::ApplyPause(NotificationDaemon& daemon)
{
    bool paused = false;
    switch (daemon.GetPaused(paused)) {
    case BusAnswer::kDone:
        break;
    case BusAnswer::kSilent:
        LogSilence(daemon.UniqueName());
        return false;
    case BusAnswer::kRefused:
        PLATFORM_LOG(DLOG_INFO, "the notification daemon cannot be held back: popups stay as they are");
        return false;
    }
    if (busIdentity_.empty()) {
        busIdentity_ = bus_.Identity();
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
    case BusAnswer::kDone:
        held_ = held;
        return true;
    case BusAnswer::kSilent:
        held_ = held; // it may still do it
        LogSilence(daemon.UniqueName());
        return false;
    case BusAnswer::kRefused:
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

} // namespace desktop
