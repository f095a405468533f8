#pragma once

namespace desktop {

/// Ends the process at once with an exit status that is not 0: popups are given back, and one line
/// gives the reason. For the moments at which the main loop and the toolkit do not answer any more.
/// Bounded in time; takes no part in the normal end.
[[noreturn]] void LeaveAtOnce(const char* reason);

/// From now on losing an X connection ends the process with `LeaveAtOnce`. The toolkit cannot be
/// torn down at that point. Call it again once the toolkit has its connection: it installs a handler
/// of its own.
void ExitWhenXServerIsLost();

} // namespace desktop
