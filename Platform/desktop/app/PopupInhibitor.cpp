#include "Platform/desktop/app/PopupInhibitor.h"

#include <unistd.h>
#include <utility>

#include "Platform/desktop/base/PlatformLog.h"

namespace desktop {

namespace {

constexpr char kReason[] = "No popups over the demonstration";

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
    const bool joined = bus_.Join();
    bus_.KeepJoined([this] { OnJoined(); }, [this] { OnBusLost(); });
    return joined;
}

void PopupInhibitor::Close()
{
    End();
    bus_.Leave();
}

bool PopupInhibitor::Begin()
{
    wanted_ = true;
    if (held_) {
        return true;
    }
    if (!bus_.IsJoined()) {
        return false;
    }
    AskForOwner();
    // Each answer sends the next request of the chain; the loop ends with the last answer or a timeout.
    while (bus_.WaitForAnswer()) {
    }
    if (owner_.empty()) {
        PLATFORM_LOG(DLOG_INFO, "no notification daemon answers on the session bus: no popups to hold back yet");
    } else if (bus_.IsAsking()) {
        LogSilence();
    }
    return held_ && !bus_.IsAsking();
}

void PopupInhibitor::End()
{
    wanted_ = false;
    undecided_ = false;
    owner_.clear();
    retry_.Stop();
    bus_.StopWatching();
    bus_.CancelAsk();
    if (!held_) {
        return;
    }
    const Held held = *std::exchange(held_, std::nullopt);
    if (bus_.Call(RestoreRequest(held)).answer == BusAnswer::kDone) {
        RemovePopupRecord(recordFile_);
        return;
    }
    // The record stays: it tells the next start which state to restore.
    PLATFORM_LOG(DLOG_WARN, "the notification daemon %s does not answer: popups stay held back until the next start",
                 held.daemon.c_str());
}

void PopupInhibitor::OnJoined()
{
    if (wanted_) {
        AskForOwner();
    }
}

void PopupInhibitor::OnBusLost()
{
    retry_.Stop();
    owner_.clear();
    undecided_ = false;
    busIdentity_.clear();
    // An inhibition ends with the connection. A pause may outlive it, and the record holds the state
    // before it.
    if (held_ && held_->inhibited) {
        RemovePopupRecord(recordFile_);
    }
    held_.reset();
}

void PopupInhibitor::AskForOwner()
{
    bus_.WatchOwner(kNotificationsName, [this](const std::string& owner) { OnOwner(owner); });
    bus_.Ask(NameOwnerRequest(kNotificationsName), [this](const BusReply& reply) { OnOwner(UniqueNameIn(reply)); });
}

void PopupInhibitor::OnOwner(const std::string& owner)
{
    if (held_ && held_->daemon == owner) {
        return;
    }
    // A new owner: an answer of the old one must not be taken for the new one's.
    bus_.CancelAsk();
    GiveBackWithoutWaiting();
    owner_ = owner;
    undecided_ = !owner.empty();
    silenceLogged_ = false;
    if (retry_.IsRunning()) {
        retry_.Start(); // the name changes hands quickly: only the last owner is asked
    } else if (undecided_) {
        retry_.Start();
        AskDaemon();
    }
}

void PopupInhibitor::OnRetry()
{
    if (!undecided_) {
        return;
    }
    if (asked_ == owner_) {
        LogSilence();
    }
    retry_.Continue();
    AskDaemon();
}

void PopupInhibitor::AskDaemon()
{
    asked_ = owner_;
    const NotificationDaemon daemon(owner_);
    bus_.Ask(daemon.InhibitRequest(applicationId_.c_str(), kReason),
             [this](const BusReply& reply) { OnInhibited(reply); });
}

void PopupInhibitor::OnInhibited(const BusReply& reply)
{
    if (reply.answer == BusAnswer::kSilent) {
        return;
    }
    // A daemon without the method answers with an error, and one with another `Inhibit` without a cookie.
    if (const std::optional<std::uint32_t> cookie = CookieIn(reply)) {
        undecided_ = false;
        held_ = Held{owner_, true, *cookie, false};
        // The record serves tools alone here, so an error does no harm: the daemon ends an inhibition with
        // the connection.
        static_cast<void>(Save(*held_));
        LogHeld();
        return;
    }
    bus_.Ask(NotificationDaemon(owner_).GetPausedRequest(), [this](const BusReply& found) { OnPausedFound(found); });
}

void PopupInhibitor::OnPausedFound(const BusReply& reply)
{
    if (reply.answer == BusAnswer::kSilent) {
        return;
    }
    const std::optional<bool> paused = PausedIn(reply);
    if (!paused) {
        undecided_ = false;
        PLATFORM_LOG(DLOG_INFO, "the notification daemon cannot be held back: popups stay as they are");
        return;
    }
    if (!busIdentity_.empty()) {
        Pause(*paused);
        return;
    }
    // The record names the bus: another bus may have a daemon with the same unique name.
    bus_.Ask(IdentityRequest(), [this, before = *paused](const BusReply& identity) {
        busIdentity_ = IdentityIn(identity);
        if (!busIdentity_.empty()) {
            Pause(before);
        }
    });
}

void PopupInhibitor::Pause(bool pausedBefore)
{
    undecided_ = false;
    // A record left by a killed process: that process caused the pause found now.
    const std::optional<PopupRecord> left = ReadPopupRecord(recordFile_);
    if (left && !left->inhibited && left->bus == busIdentity_ && left->daemon == owner_) {
        pausedBefore = left->pausedBefore;
    }
    const Held held{owner_, false, 0, pausedBefore};
    if (const Result<void> saved = Save(held); !saved) {
        PLATFORM_LOG(DLOG_WARN, "no record can be kept in XDG_RUNTIME_DIR (%s): popups stay as they are",
                     saved.Error().text.c_str());
        return;
    }
    held_ = held; // from here on, because a daemon that does not answer may still pause
    bus_.Ask(NotificationDaemon(owner_).SetPausedRequest(true), [this](const BusReply& reply) { OnPaused(reply); });
}

void PopupInhibitor::OnPaused(const BusReply& reply)
{
    if (reply.answer == BusAnswer::kDone) {
        LogHeld();
    } else if (reply.answer == BusAnswer::kRefused) {
        held_.reset();
        RemovePopupRecord(recordFile_);
        PLATFORM_LOG(DLOG_WARN, "the notification daemon refuses to pause: popups stay as they are");
    }
}

void PopupInhibitor::LogSilence()
{
    if (!std::exchange(silenceLogged_, true)) {
        PLATFORM_LOG(DLOG_WARN, "the notification daemon %s does not answer: popups stay as they are", owner_.c_str());
    }
}

void PopupInhibitor::LogHeld()
{
    if (silenceLogged_) {
        PLATFORM_LOG(DLOG_INFO, "the notification daemon %s answers now: popups are held back", owner_.c_str());
    }
}

Result<void> PopupInhibitor::Save(const Held& held)
{
    return WritePopupRecord(recordFile_, {getpid(), busIdentity_, held.daemon, held.inhibited, held.pausedBefore});
}

BusMessage PopupInhibitor::RestoreRequest(const Held& held)
{
    const NotificationDaemon daemon(held.daemon);
    return held.inhibited ? daemon.UnInhibitRequest(held.cookie) : daemon.SetPausedRequest(held.pausedBefore);
}

/// Restores a daemon that has lost the name. If it has ended, the bus drops the request; if it lives on,
/// it must not stay paused.
void PopupInhibitor::GiveBackWithoutWaiting()
{
    if (held_) {
        bus_.Send(RestoreRequest(*held_));
        held_.reset();
        RemovePopupRecord(recordFile_);
    }
}

} // namespace desktop
