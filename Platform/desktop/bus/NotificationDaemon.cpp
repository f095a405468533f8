#include "Platform/desktop/bus/NotificationDaemon.h"

#include "Platform/desktop/bus/CappedText.h"

namespace desktop {

namespace {

constexpr char kNotificationsPath[] = "/org/freedesktop/Notifications";
constexpr const char* kDunstInterface = "org.dunstproject.cmd0";
constexpr const char* kDunstPaused = "paused";

constexpr std::size_t kLongestProductName = 80;

} // namespace

BusMessage NotificationDaemon::Request(const char* interface, const char* method) const
{
    return BusMessage(dbus_message_new_method_call(uniqueName_.c_str(), kNotificationsPath, interface, method));
}

BusMessage NotificationDaemon::InhibitRequest(const char* applicationId, const char* reason) const
{
    BusMessage request = Request(kNotificationsName, "Inhibit");
    DBusMessageIter arguments;
    DBusMessageIter hints; // required by the method, and empty
    dbus_message_iter_init_append(request.get(), &arguments);
    dbus_message_iter_append_basic(&arguments, DBUS_TYPE_STRING, &applicationId);
    dbus_message_iter_append_basic(&arguments, DBUS_TYPE_STRING, &reason);
    dbus_message_iter_open_container(&arguments, DBUS_TYPE_ARRAY, "{sv}", &hints);
    dbus_message_iter_close_container(&arguments, &hints);
    return request;
}

BusMessage NotificationDaemon::UnInhibitRequest(std::uint32_t cookie) const
{
    BusMessage request = Request(kNotificationsName, "UnInhibit");
    dbus_message_append_args(request.get(), DBUS_TYPE_UINT32, &cookie, DBUS_TYPE_INVALID);
    return request;
}

BusMessage NotificationDaemon::GetPausedRequest() const
{
    BusMessage request = Request(DBUS_INTERFACE_PROPERTIES, "Get");
    dbus_message_append_args(request.get(), DBUS_TYPE_STRING, &kDunstInterface, DBUS_TYPE_STRING, &kDunstPaused,
                             DBUS_TYPE_INVALID);
    return request;
}

BusMessage NotificationDaemon::SetPausedRequest(bool paused) const
{
    BusMessage request = Request(DBUS_INTERFACE_PROPERTIES, "Set");
    const dbus_bool_t value = paused ? TRUE : FALSE;
    DBusMessageIter arguments;
    DBusMessageIter variant;
    dbus_message_iter_init_append(request.get(), &arguments);
    dbus_message_iter_append_basic(&arguments, DBUS_TYPE_STRING, &kDunstInterface);
    dbus_message_iter_append_basic(&arguments, DBUS_TYPE_STRING, &kDunstPaused);
    dbus_message_iter_open_container(&arguments, DBUS_TYPE_VARIANT, DBUS_TYPE_BOOLEAN_AS_STRING, &variant);
    dbus_message_iter_append_basic(&variant, DBUS_TYPE_BOOLEAN, &value);
    dbus_message_iter_close_container(&arguments, &variant);
    return request;
}

BusMessage NotificationDaemon::InformationRequest() const
{
    return Request(kNotificationsName, "GetServerInformation");
}

std::optional<std::uint32_t> CookieIn(const BusReply& reply)
{
    dbus_uint32_t cookie = 0;
    if (reply.answer != BusAnswer::kDone ||
        dbus_message_get_args(reply.message.get(), nullptr, DBUS_TYPE_UINT32, &cookie, DBUS_TYPE_INVALID) == FALSE) {
        return std::nullopt;
    }
    return cookie;
}

std::optional<bool> PausedIn(const BusReply& reply)
{
    DBusMessageIter result;
    if (reply.answer != BusAnswer::kDone || dbus_message_iter_init(reply.message.get(), &result) == FALSE ||
        dbus_message_iter_get_arg_type(&result) != DBUS_TYPE_VARIANT) {
        return std::nullopt;
    }
    DBusMessageIter variant;
    dbus_message_iter_recurse(&result, &variant);
    if (dbus_message_iter_get_arg_type(&variant) != DBUS_TYPE_BOOLEAN) {
        return std::nullopt;
    }
    dbus_bool_t value = FALSE;
    dbus_message_iter_get_basic(&variant, &value);
    return value != FALSE;
}

std::string ProductNameIn(const BusReply& reply)
{
    const char* name = nullptr;
    // The daemon's maker and versions follow.
    if (reply.answer != BusAnswer::kDone ||
        dbus_message_get_args(reply.message.get(), nullptr, DBUS_TYPE_STRING, &name, DBUS_TYPE_INVALID) == FALSE) {
        return "";
    }
    return CappedText(name, kLongestProductName);
}

} // namespace desktop
