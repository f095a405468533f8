#pragma once

#include <chrono>

#include <X11/Xlib.h>

#include "Platform/desktop/x11/Instance.h"

/// Waits until the application has read every key event that it was sent before the call, and so
/// has translated its keycode. True as well when the application has ended or has no window for
/// keys; false when it does not answer within `limit`.
bool HasReadItsEvents(Display* display, const desktop::InstanceFacts& instance, std::chrono::milliseconds limit);
