#pragma once

#include <string>

namespace desktop {

/// Why the calling thread's last `vconf_*` operation failed: one sentence without a line end, empty
/// after a success. Valid until the thread's next operation.
///
/// The C interface has no place for a reason, so it is kept beside it, as `dlerror` keeps its own.
const std::string& LastSettingsError();

} // namespace desktop
