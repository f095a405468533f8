#pragma once

#include <chrono>
#include <Ecore.h>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Platform/common/FileDescriptor.h"
#include "Platform/desktop/bus/BusMessage.h"

namespace desktop {

/// A connection to a message bus, on libdbus alone: Eldbus takes no timeout for joining a bus and
/// prints each refusal as an error. Main thread only.
///
/// It works without a main loop, where it waits for single answers, and on the Ecore main loop, where it
/// never waits. The bus starts no service to answer a request.
class BusConnection {
public:
    /// The longest that any operation waits.
    static constexpr std::chrono::milliseconds kAnswerTimeout{400};

    using Answered = std::function<void(const BusReply& reply)>;
    using Signalled = std::function<void(DBusMessage* signal)>;

    /// Connects to one place of a D-Bus address; null when the place refuses. Other requests are allowed
    /// once the bus has answered `HelloRequest`.
    static std::unique_ptr<BusConnection> Open(const std::string& place);
    BusConnection(const BusConnection&) = delete;
    BusConnection& operator=(const BusConnection&) = delete;
    ~BusConnection();

    bool IsConnected() const;

    /// Takes the name that the bus gave in its answer to `HelloRequest`; false when it gave none.
    bool TakeName(const BusReply& hello);
    bool HasName() const;

    /// Sends a request and waits for its answer.
    BusReply Call(const BusMessage& request);

    /// Sends a request and asks for no answer. Does not wait.
    void Send(const BusMessage& request);

    /// Sends a request and calls back with its answer, no matter how late. Only one request is pending at a
    /// time: a new one replaces the old one, whose answer is lost.
    void Ask(const BusMessage& request, Answered answered);
    void CancelAsk();
    bool IsAsking() const { return asked_ != nullptr; }

    /// Waits for the pending answer, which is passed on as usual. Returns false when none came in time; the
    /// request stays pending.
    bool WaitForAnswer();

    /// Passes each signal that the bus itself sends to `signalled`. Other clients can forge such signals by
    /// sending them to this connection; those are not passed on.
    void ListenTo(Signalled signalled) { signalled_ = std::move(signalled); }

    /// From now on the Ecore main loop reads what arrives. `lost` is called once the bus is gone;
    /// it may delete the connection.
    void ServeOnLoop(std::function<void()> lost);

private:
    struct CloseConnection {
        void operator()(DBusConnection* connection) const
        {
            dbus_connection_close(connection);
            dbus_connection_unref(connection);
        }
    };
    struct CancelPending {
        void operator()(DBusPendingCall* call) const
        {
            dbus_pending_call_cancel(call);
            dbus_pending_call_unref(call);
        }
    };
    using PendingCall = std::unique_ptr<DBusPendingCall, CancelPending>;

    explicit BusConnection(DBusConnection* connection) : connection_(connection) {}

    static dbus_bool_t OnWatchAdded(DBusWatch* watch, void* data);
    static void OnWatchRemoved(DBusWatch* watch, void* data);
    static void OnWatchToggled(DBusWatch* watch, void* data);
    static DBusHandlerResult OnMessage(DBusConnection* connection, DBusMessage* message, void* data);
    static void OnAnswered(DBusPendingCall* call, void* data);
    static Eina_Bool OnReady(void* data, Ecore_Fd_Handler* handler);

    bool Prepare();
    PendingCall Post(const BusMessage& request);
    BusReply ReplyTo(DBusPendingCall* call) const;
    unsigned int Interest() const;
    void UpdateInterest();
    void Handle(unsigned int flags);
    void Serve(std::chrono::milliseconds longest);
    bool ServeUntil(const std::function<bool()>& condition);

    std::vector<DBusWatch*> watches_; ///< declared before the connection, whose end removes them
    platform::FileDescriptor socket_;
    std::unique_ptr<DBusConnection, CloseConnection> connection_;
    PendingCall asked_;
    Answered answered_;
    Signalled signalled_;
    std::function<void()> lost_;
    Ecore_Fd_Handler* ready_ = nullptr;
};

} // namespace desktop
