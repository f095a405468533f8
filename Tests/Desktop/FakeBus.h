#pragma once

#include <dbus/dbus.h>
#include <functional>
#include <string>

namespace fixtures {

/// Listens on a Unix socket; -1 when that fails.
int ListenOn(const std::string& path);

/// A bus that says what a test wants: answers every connection to a listening socket, one after
/// the other, for ever. `answer` appends the arguments of the reply to a call; false: no reply.
[[noreturn]] void ServeFakeBus(int listening, const std::function<bool(DBusMessage* call, DBusMessage* reply)>& answer);

} // namespace fixtures
