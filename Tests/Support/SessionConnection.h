#pragma once

#include <cstdlib>
#include <dbus/dbus.h>

namespace fixtures {

/// A new connection to the session bus; never null. `dbus_bus_get` would go on to use the address
/// of the process's first one.
inline DBusConnection* ConnectToSessionBus()
{
    DBusConnection* bus = dbus_connection_open_private(std::getenv("DBUS_SESSION_BUS_ADDRESS"), nullptr);
    if (bus == nullptr || dbus_bus_register(bus, nullptr) == FALSE) {
        std::abort();
    }
    dbus_connection_set_exit_on_disconnect(bus, FALSE);
    return bus;
}

} // namespace fixtures
