#pragma once

#include <string>
#include <string_view>

namespace desktop {

/// Puts a file with this content in the place of `path`, whole or not at all, and onto the disk.
/// A writer that is killed leaves at most a temporary file beside it, ".tvsettings-new-" and some
/// letters, which the next writer in that folder removes. A new file is its owner's alone (0600); one
/// that takes another's place takes over its mode, and its owner and group where that is allowed.
/// Returns 0 or the errno.
int ReplaceFile(const std::string& path, std::string_view content);

} // namespace desktop
