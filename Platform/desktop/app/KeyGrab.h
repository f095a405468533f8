#pragma once

namespace desktop {

/// Releases every key that this process holds, so that the next instance can take them. For the end of
/// the process. Main thread only.
void ReleaseHeldKeys();

} // namespace desktop
