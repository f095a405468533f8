#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Platform/desktop/bus/BusMessage.h"

namespace desktop {

constexpr char kNotificationsName[] = "org.freedesktop.Notifications";

/// The requests to one running notification daemon. It is addressed by its unique name, so that no
/// answer ever comes from the next one.
class NotificationDaemon {
public:
    /// `uniqueName` is one according to `IsUniqueName`.
    explicit NotificationDaemon(std::string uniqueName) : uniqueName_(std::move(uniqueName)) {}

    /// The desktop's own way to hold notifications back: the cookie in the answer ends it, and so
    /// does the end of the connection.
    BusMessage InhibitRequest(const char* applicationId, const char* reason) const;
    BusMessage UnInhibitRequest(std::uint32_t cookie) const;

    /// dunst's way, which outlives the connection.
    BusMessage GetPausedRequest() const;
    BusMessage SetPausedRequest(bool paused) const;

    /// What the daemon is.
    BusMessage InformationRequest() const;

private:
    BusMessage Request(const char* interface, const char* method) const;

    std::string uniqueName_;
};

/// The answers. None: the request was not granted, or the answer is of another type.
std::optional<std::uint32_t> CookieIn(const BusReply& reply);
std::optional<bool> PausedIn(const BusReply& reply);

/// What the daemon calls itself, such as "dunst"; a long name is cut. Empty: it does not tell.
std::string ProductNameIn(const BusReply& reply);

} // namespace desktop
