#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "Platform/desktop/bus/BusConnection.h"
#include "Platform/desktop/bus/RetryTimer.h"

namespace desktop {

/// The desktop's message bus at `SessionBusAddress`: single answers with a timeout and, on the Ecore main
/// loop, a watch on the owner of one name and on the bus itself. Main thread only.
class SessionBus {
public:
    /// The new owner's unique name; empty when the name has no owner.
    using OwnerChanged = std::function<void(const std::string& owner)>;

    SessionBus() = default;
    SessionBus(const SessionBus&) = delete;
    SessionBus& operator=(const SessionBus&) = delete;
    ~SessionBus() { Leave(); }

    /// Returns false after one log line when there is no bus to join. Waits for twice
    /// `BusConnection::kAnswerTimeout` at most.
    bool Join();
    void Leave();
    bool IsJoined() const { return connection_ != nullptr && connection_->HasName(); }

    /// From now on the Ecore main loop serves the bus. One that goes away, or did not answer
    /// `Join`, is joined as soon as it answers, as long as `RetryTimer` tries. `lost` is called
    /// when a bus that was joined has gone, `joined` when one is joined on the loop. A bus that is
    /// not on a Unix socket is not joined again: connecting to it might block the loop.
    void KeepJoined(std::function<void()> joined, std::function<void()> lost);

    /// The operations of `BusConnection`. Without a connection there is no answer.
    BusReply Call(const BusMessage& request);
    void Send(const BusMessage& request);
    void Ask(const BusMessage& request, BusConnection::Answered answered);
    void CancelAsk();
    bool IsAsking() const { return connection_ != nullptr && connection_->IsAsking(); }
    bool WaitForAnswer() { return IsAsking() && connection_->WaitForAnswer(); }

    /// Calls back at each change of the name's owner. One name at a time; the watch ends when the
    /// bus goes away. `changed` must not use `Call`.
    void WatchOwner(const char* name, OwnerChanged changed);
    void StopWatching();

private:
    void OnRetry();
    void OnHello(const BusReply& reply);
    void OnLost();
    void OnSignal(DBusMessage* signal);

    std::unique_ptr<BusConnection> connection_;
    std::string watchedName_;
    OwnerChanged changed_;
    std::function<void()> joined_;
    std::function<void()> lost_;
    RetryTimer retry_{[this] { OnRetry(); }};
    std::size_t nextPlace_ = 0;
    bool wasJoined_ = false; ///< and its loss has not been reported yet
};

} // namespace desktop
