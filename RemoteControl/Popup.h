#pragma once

#include <string>

/// Sends a notification by the session bus, as any program that wants a popup does. Returns how it went, in
/// one sentence. Waits about a second at most.
std::string SendPopup();
