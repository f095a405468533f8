#include "Platform/desktop/bus/SessionBus.h"

#include <optional>
#include <utility>
#include <vector>

#include "Platform/desktop/base/PlatformLog.h"
#include "Platform/desktop/bus/BusAddress.h"
#include "Platform/desktop/bus/BusProbe.h"

namespace desktop {

namespace {

std::string OwnerRule(const std::string& name)
{
    return "type='signal',sender='" DBUS_SERVICE_DBUS "',interface='" DBUS_INTERFACE_DBUS
           "',member='NameOwnerChanged',arg0='" +
           name + "'";
}

} // namespace

bool SessionBus::Join()
{
    if (IsJoined()) {
        return true;
    }
    const std::string address = SessionBusAddress();
    if (address.empty()) {
        PLATFORM_LOG(DLOG_INFO, "no session bus: popups stay as they are");
        return false;
    }
    // Probed beforehand: the library takes the first place that accepts a connection, and a hanging bus
    // does accept one.
    const std::optional<std::string> place = AnsweringPlace(address, BusConnection::kAnswerTimeout);
    connection_ = place ? BusConnection::Open(*place) : nullptr;
    wasJoined_ = connection_ != nullptr && connection_->TakeName(connection_->Call(HelloRequest()));
    if (!wasJoined_) {
        connection_.reset();
        PLATFORM_LOG(DLOG_WARN, "the session bus at %s does not answer: popups stay as they are",
                     ShownAddress(address).c_str());
    }
    return wasJoined_;
}

void SessionBus::Leave()
{
    StopWatching();
    retry_.Stop();
    connection_.reset();
    wasJoined_ = false;
}

void SessionBus::KeepJoined(std::function<void()> joined, std::function<void()> lost)
{
    joined_ = std::move(joined);
    lost_ = std::move(lost);
    if (connection_ != nullptr) {
        connection_->ServeOnLoop([this] { OnLost(); });
    } else if (!SessionBusAddress().empty()) {
        retry_.Start();
    }
}

/// Tries one place of the address, which has until the next retry to answer.
void SessionBus::OnRetry()
{
    retry_.Continue();
    connection_.reset();
    const std::vector<std::string> places = PlacesOf(SessionBusAddress());
    if (places.empty()) {
        return; // the socket is not there yet
    }
    const std::string& place = places[nextPlace_++ % places.size()];
    connection_ = TakesConnections(place) ? BusConnection::Open(place) : nullptr;
    if (connection_ != nullptr) {
        connection_->ServeOnLoop([this] { OnLost(); });
        connection_->Ask(HelloRequest(), [this](const BusReply& reply) { OnHello(reply); });
    }
}

void SessionBus::OnHello(const BusReply& reply)
{
    if (connection_->TakeName(reply)) {
        retry_.Stop();
        wasJoined_ = true;
        PLATFORM_LOG(DLOG_INFO, "the session bus answers now");
        joined_();
    }
}

void SessionBus::OnLost()
{
    connection_.reset();
    watchedName_.clear();
    if (std::exchange(wasJoined_, false)) {
        PLATFORM_LOG(DLOG_WARN, "the session bus has gone away");
        retry_.Start();
        lost_();
    }
}

BusReply SessionBus::Call(const BusMessage& request)
{
    return connection_ != nullptr ? connection_->Call(request) : BusReply();
}

void SessionBus::Send(const BusMessage& request)
{
    if (connection_ != nullptr) {
        connection_->Send(request);
    }
}

void SessionBus::Ask(const BusMessage& request, BusConnection::Answered answered)
{
    if (connection_ != nullptr) {
        connection_->Ask(request, std::move(answered));
    }
}

void SessionBus::CancelAsk()
{
    if (connection_ != nullptr) {
        connection_->CancelAsk();
    }
}

void SessionBus::WatchOwner(const char* name, OwnerChanged changed)
{
    StopWatching();
    if (connection_ == nullptr) {
        return;
    }
    watchedName_ = name;
    changed_ = std::move(changed);
    connection_->ListenTo([this](DBusMessage* signal) { OnSignal(signal); });
    connection_->Send(AddMatchRequest(OwnerRule(watchedName_)));
}

void SessionBus::StopWatching()
{
    if (connection_ != nullptr && !watchedName_.empty()) {
        connection_->ListenTo(nullptr);
        connection_->Send(RemoveMatchRequest(OwnerRule(watchedName_)));
    }
    watchedName_.clear();
}

void SessionBus::OnSignal(DBusMessage* signal)
{
    const char* name = nullptr;
    const char* before = nullptr;
    const char* now = nullptr;
    if (dbus_message_is_signal(signal, DBUS_INTERFACE_DBUS, "NameOwnerChanged") != FALSE &&
        dbus_message_get_args(signal, nullptr, DBUS_TYPE_STRING, &name, DBUS_TYPE_STRING, &before, DBUS_TYPE_STRING,
                              &now, DBUS_TYPE_INVALID) != FALSE &&
        watchedName_ == name && (*now == '\0' || IsUniqueName(now))) {
        changed_(now);
    }
}

} // namespace desktop
