#include "Platform/desktop/NotificationDaemon.h"

#include <memory>
#include <string_view>
#include <utility>

namespace desktop {

namespace {

constexpr char kNotificationsPath[] = "/org/freedesktop/Notifications";
constexpr char kDunstInterface[] = "org.dunstproject.cmd0";
constexpr char kDunstPaused[] = "paused";

struct ReleaseMessage {
    void operator()(Eldbus_Message* message) const { eldbus_message_unref(message); }
};

using Message = std::unique_ptr<Eldbus_Message, ReleaseMessage>;

/// Sends a request; `reply` is null unless the answer is `kDone`.
DaemonAnswer Ask(Eldbus_Proxy* proxy, Eldbus_Message* request, Message& reply)
{
    reply.reset(eldbus_proxy_send_and_block(proxy, request, kDaemonTimeoutMilliseconds));
    if (reply == nullptr) {
        return DaemonAnswer::kSilent;
    }
    const char* name = nullptr;
    const char* text = nullptr;
    if (!eldbus_message_error_get(reply.get(), &name, &text)) {
        return DaemonAnswer::kDone;
    }
    reply.reset();
    const std::string_view error(name != nullptr ? name : "");
    const bool nobody = error == ELDBUS_ERROR_PENDING_TIMEOUT || error == "org.freedesktop.DBus.Error.NoReply" ||
                        error == "org.freedesktop.DBus.Error.Disconnected" ||
                        error == "org.freedesktop.DBus.Error.ServiceUnknown";
    return nobody ? DaemonAnswer::kSilent : DaemonAnswer::kRefused;
}

/// One question to the bus itself that is answered with one text.
std::optional<std::string> AskBus(Eldbus_Connection* bus, const char* method, const char* argument)
{
    Eldbus_Object* object = eldbus_object_get(bus, ELDBUS_FDO_BUS, ELDBUS_FDO_PATH);
    Eldbus_Proxy* proxy = eldbus_proxy_get(object, ELDBUS_FDO_INTERFACE);
    Eldbus_Message* request = eldbus_proxy_method_call_new(proxy, method);
    if (argument != nullptr) {
        eldbus_message_arguments_append(request, "s", argument);
    }
    Message reply;
    std::optional<std::string> answer;
    const char* text = nullptr;
    if (Ask(proxy, request, reply) == DaemonAnswer::kDone && eldbus_message_arguments_get(reply.get(), "s", &text)) {
        answer = text;
    }
    eldbus_proxy_unref(proxy);
    eldbus_object_unref(object);
    return answer;
}

} // namespace

std::optional<std::string> FindNotificationDaemon(Eldbus_Connection* bus)
{
    return AskBus(bus, "GetNameOwner", kNotificationsName);
}

std::string BusIdentity(Eldbus_Connection* bus)
{
    return AskBus(bus, "GetId", nullptr).value_or("");
}

NotificationDaemon::NotificationDaemon(Eldbus_Connection* bus, std::string uniqueName)
    : uniqueName_(std::move(uniqueName)),
      object_(eldbus_object_get(bus, uniqueName_.c_str(), kNotificationsPath)),
      notifications_(eldbus_proxy_get(object_, kNotificationsName)),
      properties_(eldbus_proxy_get(object_, ELDBUS_FDO_INTERFACE_PROPERTIES))
{
}

NotificationDaemon::~NotificationDaemon()
{
    eldbus_proxy_unref(properties_);
    eldbus_proxy_unref(notifications_);
    eldbus_object_unref(object_);
}

DaemonAnswer NotificationDaemon::Inhibit(const char* applicationId, const char* reason, std::uint32_t& cookie)
{
    Eldbus_Message* request = eldbus_proxy_method_call_new(notifications_, "Inhibit");
    Eldbus_Message_Iter* arguments = eldbus_message_iter_get(request);
    eldbus_message_iter_arguments_append(arguments, "ss", applicationId, reason);
    Eldbus_Message_Iter* hints = eldbus_message_iter_container_new(arguments, 'a', "{sv}");
    eldbus_message_iter_container_close(arguments, hints);
    Message reply;
    const DaemonAnswer answer = Ask(notifications_, request, reply);
    if (answer == DaemonAnswer::kDone && !eldbus_message_arguments_get(reply.get(), "u", &cookie)) {
        return DaemonAnswer::kRefused;
    }
    return answer;
}

DaemonAnswer NotificationDaemon::UnInhibit(std::uint32_t cookie)
{
    Eldbus_Message* request = eldbus_proxy_method_call_new(notifications_, "UnInhibit");
    eldbus_message_arguments_append(request, "u", cookie);
    Message reply;
    return Ask(notifications_, request, reply);
}

DaemonAnswer NotificationDaemon::GetPaused(bool& paused)
{
    Eldbus_Message* request = eldbus_proxy_method_call_new(properties_, "Get");
    eldbus_message_arguments_append(request, "ss", kDunstInterface, kDunstPaused);
    Message reply;
    const DaemonAnswer answer = Ask(properties_, request, reply);
    if (answer != DaemonAnswer::kDone) {
        return answer;
    }
    Eldbus_Message_Iter* variant = nullptr;
    Eina_Bool value = EINA_FALSE;
    if (!eldbus_message_arguments_get(reply.get(), "v", &variant) ||
        !eldbus_message_iter_arguments_get(variant, "b", &value)) {
        return DaemonAnswer::kRefused;
    }
    paused = value != EINA_FALSE;
    return DaemonAnswer::kDone;
}

DaemonAnswer NotificationDaemon::SetPaused(bool paused)
{
    Eldbus_Message* request = eldbus_proxy_method_call_new(properties_, "Set");
    Eldbus_Message_Iter* arguments = eldbus_message_iter_get(request);
    eldbus_message_iter_arguments_append(arguments, "ss", kDunstInterface, kDunstPaused);
    Eldbus_Message_Iter* variant = eldbus_message_iter_container_new(arguments, 'v', "b");
    eldbus_message_iter_basic_append(variant, 'b', paused ? EINA_TRUE : EINA_FALSE);
    eldbus_message_iter_container_close(arguments, variant);
    Message reply;
    return Ask(properties_, request, reply);
}

} // namespace desktop
