#pragma once

#include <functional>

#include <Ecore.h>

#include "Platform/desktop/x11/Instance.h"

/// Hears on the main loop what later starts of the companion ask of the running one.
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
