#pragma once

namespace desktop {

/// Releases every key that this process holds, for the next instance to take. For the end of the
/// process. Main thread only.
void ReleaseHeldKeys();

} // namespace desktop
