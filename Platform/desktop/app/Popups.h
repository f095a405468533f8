#pragma once

namespace desktop {

/// Restores popups at once, if this process holds any back. For an emergency exit: it does not need the
/// main loop, and waits for the notification daemon no longer than `BusConnection::kAnswerTimeout`.
void RestorePopupsNow();

} // namespace desktop
