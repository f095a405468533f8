#pragma once

#include <functional>

#include <Ecore.h>

#include "Platform/desktop/x11/Instance.h"

/// Receives, on the main loop, the requests of later starts of the companion.
class RaiseRequests {
public:
    /// `display` and `claim` are borrowed. `raise` runs for each request.
    RaiseRequests(Display* display, desktop::InstanceClaim& claim, std::function<void()> raise);
    ~RaiseRequests();

    RaiseRequests(const RaiseRequests&) = delete;
    RaiseRequests& operator=(const RaiseRequests&) = delete;

private:
    static Eina_Bool OnReadable(void* data, Ecore_Fd_Handler* handler);
    static Eina_Bool HasBuffered(void* data, Ecore_Fd_Handler* handler);

    Display* display_;
    desktop::InstanceClaim& claim_;
    std::function<void()> raise_;
    Ecore_Fd_Handler* handler_;
};
