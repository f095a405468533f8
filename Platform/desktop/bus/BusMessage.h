#pragma once

#include <dbus/dbus.h>
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
    kSilent,  ///< no answer in time, or the addressee does not exist
};

/// The outcome of a request. `message` is the answer of kDone and null otherwise.
///
/// Not a `Result`: a refusal and silence are answers too, on which the callers act differently.
struct BusReply {
    BusAnswer answer = BusAnswer::kSilent;
    BusMessage message;
};

/// True for a name that the bus gives to a connection, such as ":1.7". Check every name from outside:
/// libdbus aborts the process when a request is addressed to anything but a bus name.
bool IsUniqueName(const char* name);

/// The requests to the bus itself, and their checked answers. An answer that is missing, of
/// another type or not valid gives an empty text.
BusMessage HelloRequest();
BusMessage NameOwnerRequest(const char* name);
BusMessage IdentityRequest();
BusMessage AddMatchRequest(const std::string& rule);
BusMessage RemoveMatchRequest(const std::string& rule);
std::string UniqueNameIn(const BusReply& reply);
std::string IdentityIn(const BusReply& reply);

} // namespace desktop
