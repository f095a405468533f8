#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace desktop {

/// The address of the session bus: $DBUS_SESSION_BUS_ADDRESS without the places that would make the D-Bus
/// library launch a bus that stays behind; without that variable the socket "bus" in $XDG_RUNTIME_DIR, if
/// there is one. Otherwise empty.
std::string SessionBusAddress();

/// The places of a D-Bus address, which separates them with semicolons. Places after the eighth are left
/// out.
std::vector<std::string> PlacesOf(std::string_view address);

/// An address for a log line: a long one is cut.
std::string ShownAddress(const std::string& address);

} // namespace desktop
