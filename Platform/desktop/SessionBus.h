#pragma once

#include <Eldbus.h>
#include <string>

namespace desktop {

/// The desktop's message bus, through Eldbus.
///
/// It is joined only where it is known to be: $DBUS_SESSION_BUS_ADDRESS, else the socket "bus" in
/// $XDG_RUNTIME_DIR. Otherwise the D-Bus library would launch a bus that stays behind.
class SessionBus {
public:
    SessionBus() = default;
    SessionBus(const SessionBus&) = delete;
    SessionBus& operator=(const SessionBus&) = delete;
    ~SessionBus() { Leave(); }

    /// Returns false after one log line when there is no bus to join.
    bool Join();
    void Leave();

    /// Null unless joined.
    Eldbus_Connection* Connection() const { return connection_; }

private:
    bool initialised_ = false;
    Eldbus_Connection* connection_ = nullptr;
};

/// Where the bus is, or an empty text.
std::string SessionBusAddress();

} // namespace desktop
