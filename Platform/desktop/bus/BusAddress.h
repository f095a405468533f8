#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace desktop {

/// Where the session bus is known to be: $DBUS_SESSION_BUS_ADDRESS without the places that would
/// make the D-Bus library launch a bus that stays behind; if that variable is not set, the socket
/// "bus" in $XDG_RUNTIME_DIR. Otherwise empty.
std::string SessionBusAddress();

/// The places of a D-Bus address, which lists them with semicolons between. Places beyond the
/// eighth are left out.
std::vector<std::string> PlacesOf(std::string_view address);

/// An address as it is shown in a log line: a long one is cut.
std::string ShownAddress(const std::string& address);

} // namespace desktop
