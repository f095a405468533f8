#pragma once

#include <cstdint>
#include <Eldbus.h>
#include <optional>
#include <string>

namespace desktop {

/// The desktop's notification daemon, as one process on the bus. Every call blocks, for
/// `kDaemonTimeoutMilliseconds` at most, and none starts a daemon that does not run: it is
/// addressed by its unique name.
constexpr int kDaemonTimeoutMilliseconds = 400;

constexpr char kNotificationsName[] = "org.freedesktop.Notifications";

enum class DaemonAnswer {
    kDone,
    kRefused, ///< it does not know the request
    kSilent,  ///< no answer in time, or none any more
};

/// The unique name of the running daemon; nothing when none runs or the bus does not answer.
std::optional<std::string> FindNotificationDaemon(Eldbus_Connection* bus);

/// What tells this bus from every other one.
std::string BusIdentity(Eldbus_Connection* bus);

class NotificationDaemon {
public:
    NotificationDaemon(Eldbus_Connection* bus, std::string uniqueName);
    NotificationDaemon(const NotificationDaemon&) = delete;
    NotificationDaemon& operator=(const NotificationDaemon&) = delete;
    ~NotificationDaemon();

    const std::string& UniqueName() const { return uniqueName_; }

    /// The desktop's own way to hold notifications back; `cookie` ends it.
    DaemonAnswer Inhibit(const char* applicationId, const char* reason, std::uint32_t& cookie);
    DaemonAnswer UnInhibit(std::uint32_t cookie);

    /// dunst's way.
    DaemonAnswer GetPaused(bool& paused);
    DaemonAnswer SetPaused(bool paused);

private:
    std::string uniqueName_;
    Eldbus_Object* object_;
    Eldbus_Proxy* notifications_;
    Eldbus_Proxy* properties_;
};

} // namespace desktop
