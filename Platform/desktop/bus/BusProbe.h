#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace desktop {

/// The first of a D-Bus address's places whose message bus answers a greeting; none when no bus does
/// within `timeout`. All places are greeted at once, so many take no longer than one.
///
/// Only Unix sockets are asked; any other kind of place counts as answering.
std::optional<std::string> AnsweringPlace(std::string_view address, std::chrono::milliseconds timeout);

/// Whether any place of the address answers.
bool BusAnswers(std::string_view address, std::chrono::milliseconds timeout);

/// Whether one place is a Unix socket that takes a connection right now. Never waits: connecting
/// to a socket with a full queue would.
bool TakesConnections(const std::string& place);

} // namespace desktop
