#include "RemoteControl/Keys/SelectionLock.h"

#include <stdexcept>
#include <string>
#include <thread>

namespace {

constexpr std::chrono::milliseconds kPollInterval{2};

} // namespace

SelectionLock::SelectionLock(Display* display, const char* name, std::chrono::milliseconds limit,
                             EndingSignals* signals)
    : display_(display),
      selection_(XInternAtom(display, name, False)),
      window_(XCreateSimpleWindow(display, DefaultRootWindow(display), -1, -1, 1, 1, 0, 0, 0))
{
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!Try()) {
        if (std::chrono::steady_clock::now() >= deadline || !Pause(signals)) {
            XDestroyWindow(display_, window_);
            throw std::runtime_error("another 'vqmctl remote press' keeps the keyboard of display '" +
                                     std::string(DisplayString(display_)) + "' to itself");
        }
    }
}

SelectionLock::~SelectionLock()
{
    XDestroyWindow(display_, window_);
    XSync(display_, False);
}

/// False when a signal is to end the program.
bool SelectionLock::Pause(EndingSignals* signals)
{
    if (signals != nullptr) {
        return signals->Wait(kPollInterval);
    }
    std::this_thread::sleep_for(kPollInterval);
    return true;
}

bool SelectionLock::Try()
{
    XGrabServer(display_);
    const bool free = XGetSelectionOwner(display_, selection_) == None;
    if (free) {
        XSetSelectionOwner(display_, selection_, window_, CurrentTime);
    }
    XUngrabServer(display_);
    XSync(display_, False);
    return free;
}
