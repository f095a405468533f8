#include "Platform/desktop/bus/BusMessage.h"

#include <algorithm>
#include <string_view>

namespace desktop {

namespace {

/// Longer identities of a bus are rejected; D-Bus gives every bus one of 32 digits.
constexpr std::size_t kLongestIdentity = 64;

BusMessage ToBus(const char* method, const char* argument = nullptr)
{
    BusMessage request(dbus_message_new_method_call(DBUS_SERVICE_DBUS, DBUS_PATH_DBUS, DBUS_INTERFACE_DBUS, method));
    if (argument != nullptr) {
        dbus_message_append_args(request.get(), DBUS_TYPE_STRING, &argument, DBUS_TYPE_INVALID);
    }
    return request;
}

const char* TextIn(const BusReply& reply)
{
    const char* text = nullptr;
    const bool found =
        reply.answer == BusAnswer::kDone &&
        dbus_message_get_args(reply.message.get(), nullptr, DBUS_TYPE_STRING, &text, DBUS_TYPE_INVALID) != FALSE;
    return found ? text : "";
}

bool IsLetterOrDigit(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

} // namespace

bool IsUniqueName(const char* name)
{
    return name[0] == ':' && dbus_validate_bus_name(name, nullptr) != FALSE;
}

BusMessage HelloRequest()
{
    return ToBus("Hello");
}

BusMessage NameOwnerRequest(const char* name)
{
    return ToBus("GetNameOwner", name);
}

BusMessage IdentityRequest()
{
    return ToBus("GetId");
}

BusMessage AddMatchRequest(const std::string& rule)
{
    return ToBus("AddMatch", rule.c_str());
}

BusMessage RemoveMatchRequest(const std::string& rule)
{
    return ToBus("RemoveMatch", rule.c_str());
}

std::string UniqueNameIn(const BusReply& reply)
{
    const char* name = TextIn(reply);
    return IsUniqueName(name) ? name : "";
}

std::string IdentityIn(const BusReply& reply)
{
    const std::string_view text = TextIn(reply);
    const bool valid = text.size() <= kLongestIdentity && std::all_of(text.begin(), text.end(), IsLetterOrDigit);
    return valid ? std::string(text) : "";
}

} // namespace desktop
