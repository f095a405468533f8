#pragma once

#include <cstdint>
#include <string>

#include "Platform/desktop/bus/SessionBus.h"

namespace desktop {

constexpr char kNotificationsName[] = "org.freedesktop.Notifications";

/// One running notification daemon, addressed by its unique name: no answer ever comes from the
/// next one. Every call blocks for `SessionBus::kTimeoutMilliseconds` at most.
class NotificationDaemon {
public:
    NotificationDaemon(SessionBus& bus, std::string uniqueName) : bus_(bus), uniqueName_(std::move(uniqueName)) {}

    const std::string& UniqueName() const { return uniqueName_; }

    /// What the daemon calls itself, such as "dunst". Empty: it does not tell.
    std::string ProductName();

    /// The desktop's own way to hold notifications back; `cookie` ends it, and so does the end of
    /// the connection.
    BusAnswer Inhibit(const char* applicationId, const char* reason, std::uint32_t& cookie);
    BusAnswer UnInhibit(std::uint32_t cookie);

    /// dunst's way, which outlives the connection.
    BusAnswer GetPaused(bool& paused);
    BusAnswer SetPaused(bool paused);

private:
    BusMessage Request(const char* interface, const char* method) const;

    SessionBus& bus_;
    std::string uniqueName_;
};

} // namespace desktop
