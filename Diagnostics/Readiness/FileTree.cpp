#include "Diagnostics/Readiness/FileTree.h"

#include <cerrno>
#include <deque>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

#include "Diagnostics/Text/Words.h"

namespace readiness {

namespace {

/// The kernel's own limit.
constexpr int kMostLinks = 40;

std::vector<std::string> PartsOf(const std::string& path)
{
    std::vector<std::string> parts;
    for (const std::filesystem::path& part : std::filesystem::path(path).relative_path()) {
        parts.push_back(part.string());
    }
    return parts;
}

/// Follows the links of a tree as a system does whose root directory is the tree's.
class Walk {
public:
    Walk(const std::string& root, const std::string& path) : root_(root) { PutFirst(path); }

    /// A path that the system need not follow any further; after too many links the rest is left to it.
    std::string Finish()
    {
        for (int links = 0; !pending_.empty() && links <= kMostLinks;) {
            links += Step() ? 1 : 0;
        }
        for (const std::string& part : pending_) {
            reached_.push_back(part);
        }
        return Path();
    }

private:
    void PutFirst(const std::string& path)
    {
        const std::vector<std::string> parts = PartsOf(path);
        pending_.insert(pending_.begin(), parts.begin(), parts.end());
    }

    std::string Path() const
    {
        std::string path = root_;
        for (const std::string& part : reached_) {
            path += "/" + part;
        }
        return path.empty() ? "/" : path;
    }

    /// Returns whether it was a link.
    bool Step()
    {
        const std::string part = pending_.front();
        pending_.pop_front();
        if (part.empty() || part == ".") {
            return false;
        }
        if (part == "..") {
            if (!reached_.empty()) {
                reached_.pop_back();
            }
            return false;
        }
        reached_.push_back(part);
        std::error_code error;
        const std::filesystem::path target = std::filesystem::read_symlink(Path(), error);
        if (error) {
            return false; // not a link, or nothing is there
        }
        reached_.pop_back();
        if (target.is_absolute()) {
            reached_.clear();
        }
        PutFirst(target.string());
        return true;
    }

    const std::string& root_;
    std::vector<std::string> reached_; ///< below the root; no links among them
    std::deque<std::string> pending_;
};

} // namespace

FileTree::FileTree(const std::string& root) : root_(root)
{
    if (root.empty()) {
        return;
    }
    struct stat status = {};
    if (stat(root.c_str(), &status) != 0) {
        throw std::runtime_error("cannot look below " + Quoted(root) + ": " + std::generic_category().message(errno));
    }
    if (!S_ISDIR(status.st_mode)) {
        throw std::runtime_error("cannot look below " + Quoted(root) + ": it is not a directory");
    }
    while (root_.size() > 1 && root_.back() == '/') {
        root_.pop_back();
    }
    if (root_ == "/") {
        root_.clear();
    }
}

std::string FileTree::Locate(const std::string& name) const
{
    if (root_.empty() || name.compare(0, root_.size() + 1, root_ + "/") != 0) {
        return name;
    }
    std::string path = Walk(root_, name.substr(root_.size())).Finish();
    // "/" at the end asks for a directory.
    return name.back() == '/' && path.back() != '/' ? path + "/" : path;
}

} // namespace readiness
