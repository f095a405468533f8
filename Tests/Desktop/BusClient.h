#pragma once

#include <dbus/dbus.h>
#include <memory>
#include <string>

namespace fixtures {

/// Another client of the session bus, in this process.
class BusClient {
public:
    BusClient();

    /// The unique name of the application's connection, which this process holds too.
    std::string ApplicationName();

    /// Sends the application a signal as the bus sends it when the notification daemon's name has
    /// got another owner.
    void ForgeOwnerChange(const std::string& owner);

    /// Runs the main loop until the application has read all that was sent to it before; false
    /// when it never does.
    bool ApplicationHasRead();

private:
    struct Close {
        void operator()(DBusConnection* connection) const
        {
            dbus_connection_close(connection);
            dbus_connection_unref(connection);
        }
    };

    std::unique_ptr<DBusConnection, Close> connection_;
    std::string application_;
};

} // namespace fixtures
