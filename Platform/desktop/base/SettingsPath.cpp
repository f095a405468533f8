#include "Platform/desktop/base/SettingsPath.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <deque>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace desktop {

namespace {

/// A folder on the path goes elsewhere. The flags refuse a link, which is watched with `kLink`.
constexpr unsigned kItself = IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR | IN_DONT_FOLLOW;
/// A name in a folder of the path appears or disappears.
constexpr unsigned kEntries = IN_CREATE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE;
/// A setting has its new value: its writer has closed it, or another file has taken its place, or it is gone.
constexpr unsigned kStores = IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE;
/// A writer works on a setting in place and may not have finished.
constexpr unsigned kWrites = IN_CREATE | IN_MODIFY;
/// Replacing a link changes its number of names, which is reported as an attribute.
constexpr unsigned kLink = IN_ATTRIB | IN_DELETE_SELF | IN_MOVE_SELF | IN_DONT_FOLLOW;

using Names = std::deque<std::string>;

/// Inserts the path's names before the names that remain.
void Prepend(Names& names, const std::string& path)
{
    std::vector<std::string> parts;
    for (std::size_t begin = 0; begin < path.size();) {
        const std::size_t end = std::min(path.find('/', begin), path.size());
        if (end > begin && path.compare(begin, end - begin, ".") != 0) {
            parts.push_back(path.substr(begin, end - begin));
        }
        begin = end + 1;
    }
    names.insert(names.begin(), parts.begin(), parts.end());
}

std::string ReadLink(const std::string& path)
{
    std::array<char, PATH_MAX> target;
    const ssize_t size = readlink(path.c_str(), target.data(), target.size());
    return size > 0 ? std::string(target.data(), static_cast<std::size_t>(size)) : "";
}

std::string ParentOf(const std::string& folder)
{
    const std::size_t end = folder.rfind('/');
    return end == std::string::npos ? "" : folder.substr(0, end);
}

} // namespace

SettingsPath::SettingsPath(std::string folder, std::size_t own) : folder_(std::move(folder)), own_(own) {}

Result<void> SettingsPath::Watch()
{
    events_ = platform::FileDescriptor(inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
    if (!events_.IsOpen()) {
        return SystemError(folder_, errno);
    }
    // A path that changes while it is followed is followed again.
    constexpr int kAttempts = 3;
    std::optional<Obstacle> obstacle;
    for (int i = 0; i < kAttempts; ++i) {
        obstacle = Follow();
        if (!obstacle) {
            return {};
        }
        if (obstacle->error == EAGAIN) {
            continue;
        }
        WatchEndOfPath();
        if (obstacle->error != ENOENT) {
            break;
        }
        struct stat status {};
        if (lstat(obstacle->place.c_str(), &status) == -1) {
            return {}; // its appearance is watched
        }
        obstacle->error = EAGAIN; // it appeared before it was watched
    }
    return SystemError(obstacle->place, obstacle->error);
}

/// Each folder is watched before the path goes on in it, so that no change falls between the two.
std::optional<SettingsPath::Obstacle> SettingsPath::Follow()
{
    constexpr int kMostLinks = 40; // as the kernel's own limit
    Names names;
    Prepend(names, folder_);
    steps_.clear();
    std::string here; // without its last slash: empty for the root, which cannot move
    for (int links = 0; !names.empty();) {
        const std::string name = names.front();
        const int watch = here.empty() ? -1 : AddWatch(here, kItself | (names.size() <= own_ ? kEntries : 0U));
        names.pop_front();
        if (name == "..") {
            here = ParentOf(here);
            continue;
        }
        steps_.push_back({here, watch, name});
        const std::string next = here + "/" + name;
        struct stat status {};
        if (lstat(next.c_str(), &status) == -1) {
            return Obstacle{next, errno};
        }
        if (!S_ISLNK(status.st_mode)) {
            here = next;
            continue;
        }
        AddWatch(next, kLink);
        const std::string target = ReadLink(next);
        if (target.empty() || ++links > kMostLinks) {
            return Obstacle{next, target.empty() ? EAGAIN : ELOOP};
        }
        here = target.front() == '/' ? "" : here;
        Prepend(names, target);
    }
    folderWatch_ = AddWatch(here, kItself | kStores | kWrites);
    if (folderWatch_ == -1) {
        return Obstacle{here, errno == ENOENT ? EAGAIN : errno};
    }
    return std::nullopt;
}

/// Returns -1 and sets errno where the system refuses.
int SettingsPath::AddWatch(const std::string& path, unsigned events)
{
    return inotify_add_watch(events_.Get(), path.c_str(), events | IN_MASK_ADD);
}

/// Watches the entries of the last two folders. The last folder may be removed as well; its parent
/// notices that first.
void SettingsPath::WatchEndOfPath()
{
    const std::size_t count = steps_.size();
    for (std::size_t i = count - std::min<std::size_t>(count, 2); i < count; ++i) {
        steps_[i].watch = AddWatch(steps_[i].folder.empty() ? "/" : steps_[i].folder, kItself | kEntries);
    }
}

bool SettingsPath::IsOnPath(int watch, const char* name) const
{
    return std::any_of(steps_.begin(), steps_.end(),
                       [=](const Step& step) { return step.watch == watch && step.next == name; });
}

std::vector<SettingsPath::Event> SettingsPath::Read()
{
    std::vector<Event> all;
    // Events that do not fit stay in the queue, and the descriptor stays readable.
    alignas(inotify_event) std::array<char, 4096> buffer;
    const ssize_t size = read(events_.Get(), buffer.data(), buffer.size());
    for (ssize_t at = 0; at < size;) {
        const auto* event = reinterpret_cast<const inotify_event*>(buffer.data() + at);
        const char* name = event->len > 0 ? event->name : "";
        at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
        if ((event->mask & IN_Q_OVERFLOW) != 0) {
            all.push_back({Event::Kind::kOverflow, ""});
        } else if ((event->mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT | IN_ATTRIB)) != 0 ||
                   IsOnPath(event->wd, name)) {
            all.push_back({Event::Kind::kPathChanged, ""});
        } else if (event->wd == folderWatch_ && (event->mask & kStores) != 0) {
            all.push_back({Event::Kind::kStored, name});
        } else if (event->wd == folderWatch_ && (event->mask & kWrites) != 0) {
            all.push_back({Event::Kind::kUnderWay, name});
        }
    }
    return all;
}

} // namespace desktop
