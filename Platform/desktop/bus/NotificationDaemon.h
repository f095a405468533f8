#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Platform/desktop/bus/BusMessage.h"

namespace desktop {

constexpr char kNotificationsName[] = "org.freedesktop.Notifications";

/// The requests to one running notification daemon. It is addressed by its unique name, so that an answer
/// never comes from its successor.
class NotificationDaemon {
public:
    /// `uniqueName` is one according to `IsUniqueName`.
    explicit NotificationDaemon(std::string uniqueName) : uniqueName_(std::move(uniqueName)) {}

    /// The desktop's standard way to hold notifications back. It ends with `UnInhibitRequest` and the
    /// answer's cookie, or with the connection.
    BusMessage InhibitRequest(const char* applicationId, const char* reason) const;
    BusMessage UnInhibitRequest(std::uint32_t cookie) const;

    /// dunst's way, which outlives the connection.
    BusMessage GetPausedRequest() const;
    BusMessage SetPausedRequest(bool paused) const;

    /// The daemon's name, maker and version.
    BusMessage InformationRequest() const;

private:
    BusMessage Request(const char* interface, const char* method) const;

    std::string uniqueName_;
};

/// The answers. None: the request was refused, or the answer has another type.
std::optional<std::uint32_t> CookieIn(const BusReply& reply);
std::optional<bool> PausedIn(const BusReply& reply);

/// The daemon's name for itself, such as "dunst"; a long name is cut. Empty when there is none.
std::string ProductNameIn(const BusReply& reply);

} // namespace desktop
