#include "Platform/desktop/bus/NotificationDaemon.h"

namespace desktop {

namespace {

constexpr char kNotificationsPath[] = "/org/freedesktop/Notifications";
constexpr const char* kDunstInterface = "org.dunstproject.cmd0";
constexpr const char* kDunstPaused = "paused";

} // namespace

BusMessage NotificationDaemon::Request(const char* interface, const char* method) const
{
    return BusMessage(dbus_message_new_method_call(uniqueName_.c_str(), kNotificationsPath, interface, method));
}

std::string NotificationDaemon::ProductName()
{
    const BusMessage request = Request(kNotificationsName, "GetServerInformation");
    BusMessage reply;
    const char* name = nullptr;
    // The daemon's maker and versions follow.
    if (bus_.Call(request.get(), reply) != BusAnswer::kDone ||
        dbus_message_get_args(reply.get(), nullptr, DBUS_TYPE_STRING, &name, DBUS_TYPE_INVALID) == FALSE) {
        return "";
    }
    return name;
}

BusAnswer NotificationDaemon::Inhibit(const char* applicationId, const char* reason, std::uint32_t& cookie)
{
    const BusMessage request = Request(kNotificationsName, "Inhibit");
    DBusMessageIter arguments;
    DBusMessageIter hints;
    dbus_message_iter_init_append(request.get(), &arguments);
    dbus_message_iter_append_basic(&arguments, DBUS_TYPE_STRING, &applicationId);
    dbus_message_iter_append_basic(&arguments, DBUS_TYPE_STRING, &reason);
    dbus_message_iter_open_container(&arguments, DBUS_TYPE_ARRAY, "{sv}", &hints);
    dbus_message_iter_close_container(&arguments, &hints);

    BusMessage reply;
    const BusAnswer answer = bus_.Call(request.get(), reply);
    if (answer != BusAnswer::kDone) {
        return answer;
    }
    dbus_uint32_t given = 0;
    if (dbus_message_get_args(reply.get(), nullptr, DBUS_TYPE_UINT32, &given, DBUS_TYPE_INVALID) == FALSE) {
        return BusAnswer::kRefused;
    }
    cookie = given;
    return BusAnswer::kDone;
}

BusAnswer NotificationDaemon::UnInhibit(std::uint32_t cookie)
{
    const BusMessage request = Request(kNotificationsName, "UnInhibit");
    dbus_message_append_args(request.get(), DBUS_TYPE_UINT32, &cookie, DBUS_TYPE_INVALID);
    BusMessage reply;
    return bus_.Call(request.get(), reply);
}

BusAnswer NotificationDaemon::GetPaused(bool& paused)
{
    const BusMessage request = Request(DBUS_INTERFACE_PROPERTIES, "Get");
    dbus_message_append_args(request.get(), DBUS_TYPE_STRING, &kDunstInterface, DBUS_TYPE_STRING, &kDunstPaused,
                             DBUS_TYPE_INVALID);
    BusMessage reply;
    const BusAnswer answer = bus_.Call(request.get(), reply);
    if (answer != BusAnswer::kDone) {
        return answer;
    }
    DBusMessageIter result;
    if (dbus_message_iter_init(reply.get(), &result) == FALSE ||
        dbus_message_iter_get_arg_type(&result) != DBUS_TYPE_VARIANT) {
        return BusAnswer::kRefused;
    }
    DBusMessageIter variant;
    dbus_message_iter_recurse(&result, &variant);
    if (dbus_message_iter_get_arg_type(&variant) != DBUS_TYPE_BOOLEAN) {
        return BusAnswer::kRefused;
    }
    dbus_bool_t value = FALSE;
    dbus_message_iter_get_basic(&variant, &value);
    paused = value != FALSE;
    return BusAnswer::kDone;
}

BusAnswer NotificationDaemon::SetPaused(bool paused)
{
    const BusMessage request = Request(DBUS_INTERFACE_PROPERTIES, "Set");
    const dbus_bool_t value = paused ? TRUE : FALSE;
    DBusMessageIter arguments;
    DBusMessageIter variant;
    dbus_message_iter_init_append(request.get(), &arguments);
    dbus_message_iter_append_basic(&arguments, DBUS_TYPE_STRING, &kDunstInterface);
    dbus_message_iter_append_basic(&arguments, DBUS_TYPE_STRING, &kDunstPaused);
    dbus_message_iter_open_container(&arguments, DBUS_TYPE_VARIANT, DBUS_TYPE_BOOLEAN_AS_STRING, &variant);
    dbus_message_iter_append_basic(&variant, DBUS_TYPE_BOOLEAN, &value);
    dbus_message_iter_close_container(&arguments, &variant);
    BusMessage reply;
    return bus_.Call(request.get(), reply);
}

} // namespace desktop
