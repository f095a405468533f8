#include "Tests/Desktop/BusClient.h"

#include <unistd.h>

#include "Tests/Desktop/PopupsFixture.h"
#include "Tests/Support/SessionConnection.h"

namespace fixtures {

namespace {

constexpr const char* kNotifications = "org.freedesktop.Notifications";

} // namespace

BusClient::BusClient() : connection_(ConnectToSessionBus()) {}

std::string BusClient::ApplicationName()
{
    const std::string own = dbus_bus_get_unique_name(connection_.get());
    // Unique names count up; the application's is the latest of this process but our own.
    for (int number = 200; number >= 0 && application_.empty(); --number) {
        const std::string name = ":1." + std::to_string(number);
        const char* argument = name.c_str();
        DBusMessage* request = dbus_message_new_method_call(DBUS_SERVICE_DBUS, DBUS_PATH_DBUS, DBUS_INTERFACE_DBUS,
                                                            "GetConnectionUnixProcessID");
        dbus_message_append_args(request, DBUS_TYPE_STRING, &argument, DBUS_TYPE_INVALID);
        DBusMessage* reply = dbus_connection_send_with_reply_and_block(connection_.get(), request, -1, nullptr);
        dbus_message_unref(request);
        dbus_uint32_t pid = 0;
        if (reply != nullptr) {
            dbus_message_get_args(reply, nullptr, DBUS_TYPE_UINT32, &pid, DBUS_TYPE_INVALID);
            dbus_message_unref(reply);
        }
        if (static_cast<pid_t>(pid) == getpid() && name != own) {
            application_ = name;
        }
    }
    return application_;
}

void BusClient::ForgeOwnerChange(const std::string& owner)
{
    DBusMessage* signal = dbus_message_new_signal(DBUS_PATH_DBUS, DBUS_INTERFACE_DBUS, "NameOwnerChanged");
    const char* before = ":1.1";
    const char* now = owner.c_str();
    dbus_message_append_args(signal, DBUS_TYPE_STRING, &kNotifications, DBUS_TYPE_STRING, &before, DBUS_TYPE_STRING,
                             &now, DBUS_TYPE_INVALID);
    dbus_message_set_destination(signal, ApplicationName().c_str());
    dbus_connection_send(connection_.get(), signal, nullptr);
    dbus_message_unref(signal);
    dbus_connection_flush(connection_.get());
}

bool BusClient::ApplicationHasRead()
{
    // libdbus answers this in the order in which it passes messages on.
    DBusMessage* request = dbus_message_new_method_call(ApplicationName().c_str(), "/", DBUS_INTERFACE_PEER, "Ping");
    DBusPendingCall* call = nullptr;
    dbus_connection_send_with_reply(connection_.get(), request, &call, DBUS_TIMEOUT_INFINITE);
    dbus_message_unref(request);
    const bool answered = LoopUntil([&] {
        dbus_connection_read_write(connection_.get(), 0);
        while (dbus_connection_dispatch(connection_.get()) == DBUS_DISPATCH_DATA_REMAINS) {
        }
        return dbus_pending_call_get_completed(call) != FALSE;
    });
    dbus_pending_call_unref(call);
    return answered;
}

} // namespace fixtures
