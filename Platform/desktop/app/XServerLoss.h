#pragma once

namespace desktop {

/// From now on losing an X connection ends the process in an orderly way: popups are given back,
/// one line says why, and the exit status is not 0. The toolkit cannot be torn down at that point.
/// Call it again once the toolkit has its connection: it installs a handler of its own.
void ExitWhenXServerIsLost();

} // namespace desktop
