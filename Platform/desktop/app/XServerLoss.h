#pragma once

namespace desktop {

/// Ends the process at once with an exit status that is not 0: restores popups and logs the reason in one
/// line. For moments at which the main loop and the toolkit no longer answer. Bounded in time. The
/// normal end does not use it.
[[noreturn]] void LeaveAtOnce(const char* reason);

/// From now on losing an X connection ends the process with `LeaveAtOnce`, because the toolkit cannot be
/// torn down at that point. Call it again once the toolkit has its connection: the toolkit installs
/// another handler.
void ExitWhenXServerIsLost();

} // namespace desktop
