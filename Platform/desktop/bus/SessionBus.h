#pragma once

#include <dbus/dbus.h>
#include <Ecore.h>
#include <functional>
#include <memory>
#include <string>

namespace desktop {

struct ReleaseMessage {
    void operator()(DBusMessage* message) const { dbus_message_unref(message); }
};

using BusMessage = std::unique_ptr<DBusMessage, ReleaseMessage>;

enum class BusAnswer {
    kDone,
    kRefused, ///< an error came back
    kSilent,  ///< nothing in time, or nobody there
};

/// Where the session bus is known to be: $DBUS_SESSION_BUS_ADDRESS, else the socket "bus" in
/// $XDG_RUNTIME_DIR. Otherwise empty: the D-Bus library would launch a bus that stays behind.
std::string SessionBusAddress();

/// The desktop's message bus: blocking calls with short timeouts, and the comings and goings of
/// one name on the Ecore main loop. Main thread only.
///
/// It stands on libdbus alone: Eldbus takes no timeout for joining a bus and prints each refusal
/// as an error of its own.
class SessionBus {
public:
    /// The longest that any call blocks.
    static constexpr int kTimeoutMilliseconds = 400;

    /// The new owner's unique name; empty: nobody owns the name now.
    using OwnerChanged = std::function<void(const std::string& owner)>;

    SessionBus() = default;
    SessionBus(const SessionBus&) = delete;
    SessionBus& operator=(const SessionBus&) = delete;
    ~SessionBus() { Leave(); }

    /// Returns false after one log line when there is no bus to join.
    bool Join();
    void Leave();
    bool IsJoined() const { return connection_ != nullptr; }

    /// Sends a request and waits for its answer. Nobody is started to give one.
    BusAnswer Call(DBusMessage* request, BusMessage& reply);

    /// The bus's own answers. Empty: none.
    std::string OwnerOf(const char* name);
    std::string Identity();

    /// Calls back at each change of the name's owner, and with an empty owner when the bus itself
    /// goes away. One name at a time.
    void WatchOwner(const char* name, OwnerChanged changed);
    void StopWatching();

private:
    struct CloseConnection {
        void operator()(DBusConnection* connection) const
        {
            dbus_connection_close(connection);
            dbus_connection_unref(connection);
        }
    };

    static DBusHandlerResult OnMessage(DBusConnection* connection, DBusMessage* message, void* data);
    static Eina_Bool OnReadable(void* data, Ecore_Fd_Handler* handler);
    static void OnQueued(void* data);

    bool SayHello();
    std::string AskBus(const char* method, const char* argument);
    void DispatchSoon();
    void DispatchAll();

    std::unique_ptr<DBusConnection, CloseConnection> connection_;
    std::string watchedName_;
    OwnerChanged changed_;
    Ecore_Fd_Handler* readable_ = nullptr;
    Ecore_Job* queued_ = nullptr;
};

} // namespace desktop
