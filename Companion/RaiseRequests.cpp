#include "Companion/RaiseRequests.h"

#include <utility>

#include "Platform/desktop/environment/EndSignals.h"

RaiseRequests::RaiseRequests(Display* display, desktop::InstanceClaim& claim, std::function<void()> raise)
    : display_(display),
      claim_(claim),
      raise_(std::move(raise)),
      handler_(ecore_main_fd_handler_add(ConnectionNumber(display), ECORE_FD_READ, OnReadable, this, HasBuffered, this))
{
}

RaiseRequests::~RaiseRequests()
{
    ecore_main_fd_handler_del(handler_);
}

Eina_Bool RaiseRequests::OnReadable(void* data, Ecore_Fd_Handler* /*handler*/)
{
    auto* self = static_cast<RaiseRequests*>(data);
    while (XPending(self->display_) > 0) {
        XEvent event;
        XNextEvent(self->display_, &event);
        // A process that is about to end does not answer: the asking process is its successor.
        if (self->claim_.IsLaunchRequest(event) && !desktop::EndRequested()) {
            self->claim_.AnswerLaunchRequest(event);
            self->raise_();
        }
    }
    return ECORE_CALLBACK_RENEW;
}

Eina_Bool RaiseRequests::HasBuffered(void* data, Ecore_Fd_Handler* /*handler*/)
{
    return XEventsQueued(static_cast<RaiseRequests*>(data)->display_, QueuedAlready) > 0 ? EINA_TRUE : EINA_FALSE;
}
