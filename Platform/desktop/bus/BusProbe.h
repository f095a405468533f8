#pragma once

#include <string_view>

namespace desktop {

/// Whether the message bus at a D-Bus address answers a first greeting within this time. Only
/// Unix sockets are asked; any other address counts as answering.
bool BusAnswers(std::string_view address, int milliseconds);

} // namespace desktop
