#include "RemoteControl/Popup.h"

#include <cstdint>

#include "Platform/desktop/bus/NotificationDaemon.h"
#include "Platform/desktop/bus/SessionBus.h"

namespace {

using desktop::BusAnswer;
using desktop::BusMessage;

BusMessage NotifyRequest()
{
    const char* const application = "Remote control";
    const char* const icon = "";
    const char* const title = "A popup";
    const char* const text = "Programs send popups at the worst moment.";
    const std::uint32_t replaces = 0;
    const std::int32_t timeout = 0; // it stays until it is closed
    BusMessage request(dbus_message_new_method_call(desktop::kNotificationsName, "/org/freedesktop/Notifications",
                                                    desktop::kNotificationsName, "Notify"));
    DBusMessageIter arguments;
    DBusMessageIter list;
    dbus_message_iter_init_append(request.get(), &arguments);
    dbus_message_iter_append_basic(&arguments, DBUS_TYPE_STRING, &application);
    dbus_message_iter_append_basic(&arguments, DBUS_TYPE_UINT32, &replaces);
    for (const char* const* item : {&icon, &title, &text}) {
        dbus_message_iter_append_basic(&arguments, DBUS_TYPE_STRING, item);
    }
    for (const char* type : {"s", "{sv}"}) { // no actions, no hints
        dbus_message_iter_open_container(&arguments, DBUS_TYPE_ARRAY, type, &list);
        dbus_message_iter_close_container(&arguments, &list);
    }
    dbus_message_iter_append_basic(&arguments, DBUS_TYPE_INT32, &timeout);
    return request;
}

} // namespace

std::string SendPopup()
{
    desktop::SessionBus bus;
    if (!bus.Join()) {
        return "No popup: no session bus answers";
    }
    return bus.Call(NotifyRequest()).answer == BusAnswer::kDone ? "A popup was sent"
                                                                : "No popup: no notification daemon answers";
}
