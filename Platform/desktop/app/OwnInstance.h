#pragma once

#include <string>
#include <vector>

#include <X11/Xlib.h>

/// This process as the application's one instance on its display; see Instance.h. Main thread only.
namespace desktop {

/// Becomes the instance, or hands the one that runs a launch request and ends the process with 0. An
/// instance that is about to end is waited for and succeeded. One that does not answer at all ends
/// this process with a failure.
/// Without a display there is nothing to become. Only the first call does anything.
void BecomeTheInstance();

/// Runs `callback` on the main loop whenever a second start asks; null ends that.
void ListenForLaunchRequests(void (*callback)());

/// Lets tools know which keys are held, and which another client has.
void PublishKeys(const std::vector<std::string>& held, const std::vector<std::string>& failed);

/// Lets tools know that the main loop runs, and to which window the keys go.
void PublishKeyWindow(Window window);

/// Gives the name up, so that the next start takes over. Waits for nothing.
void GiveUpInstance();

} // namespace desktop
