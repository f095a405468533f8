#pragma once

#include <string>
#include <vector>

#include <X11/Xlib.h>

/// This process as the application's one instance on its display; see Instance.h. Main thread only.
namespace desktop {

/// Becomes the instance, or sends the running one a launch request and ends this process with 0. If the
/// running instance is about to end, waits for that and takes over. If it does not answer, ends this
/// process with a failure.
/// Does nothing without a display, and from the second call on.
void BecomeTheInstance();

/// Runs `callback` on the main loop whenever a second start asks; null ends that.
void ListenForLaunchRequests(void (*callback)());

/// Publishes for tools which keys are held, and which another client holds.
void PublishKeys(const std::vector<std::string>& held, const std::vector<std::string>& failed);

/// Publishes for tools which keys were handed back.
void PublishReleasedKeys(const std::vector<std::string>& released);

/// Publishes for tools that the main loop runs, and to which window the keys go.
void PublishKeyWindow(Window window);

/// Gives up the name, so that the next start takes over. Does not wait.
void GiveUpInstance();

} // namespace desktop
