#pragma once

namespace desktop {

/// Gives popups back right now, if this process holds any back. For the moment before an
/// emergency exit: it does not need the main loop, and waits for the notification daemon no longer
/// than `BusConnection::kAnswerTimeout`.
void RestorePopupsNow();

} // namespace desktop
