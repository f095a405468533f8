#pragma once

#include <string>
#include <string_view>

#include "Platform/common/Result.h"

namespace platform {

/// Replaces the file at `path` by one with this content, completely or not at all, and syncs it to disk.
/// A writer that is killed leaves at most a temporary file beside it, ".tvsettings-new-" and some
/// letters, which the next writer in that folder removes. A new file belongs to its owner alone (0600);
/// one that replaces another takes over its mode, and its owner and group where that is allowed.
Result<void> ReplaceFile(const std::string& path, std::string_view content);

} // namespace platform
