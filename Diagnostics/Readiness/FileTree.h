#pragma once

#include <string>

namespace readiness {

/// The tree of files that is examined: this machine's, or that of a TV below a directory, such as a
/// mounted disk, a stick or a copy.
class FileTree {
public:
    /// This machine's.
    FileTree() = default;

    /// The tree below `root`; empty is this machine's. Throws `std::runtime_error` when `root` is no directory
    /// that can be entered.
    explicit FileTree(const std::string& root);

    /// The directory below which it lies, without "/" at its end; empty for this machine's.
    const std::string& Root() const { return root_; }

    bool IsThisMachines() const { return root_.empty(); }

    /// What the TV calls `path`, an absolute path, as it is called from here.
    std::string Name(const std::string& path) const { return root_ + path; }

    /// Where the file with this name lies. Links below the root are followed as the TV follows them: for it
    /// the root is "/". A name outside the tree comes back unchanged.
    std::string Locate(const std::string& name) const;

private:
    std::string root_; ///< without "/" at its end
};

} // namespace readiness
