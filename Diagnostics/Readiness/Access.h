#pragma once

#include <string>

namespace readiness {

/// The first directory on the way to `path` that this user may not enter; empty when that is not what
/// keeps the user from it.
std::string ClosedFolder(const std::string& path);

/// What of `path`, from `root` on, only root and its owner may enter or read: a directory on the way,
/// or the file or directory itself. Empty: every user may. `root` is not looked at.
std::string ClosedToOthers(const std::string& root, const std::string& path);

} // namespace readiness
