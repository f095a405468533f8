#include "Diagnostics/Watch/FileWatch.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <deque>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <utility>

#include <sys/inotify.h>
#include <unistd.h>

#include "Diagnostics/Text/Words.h"

namespace {

/// Events that put another directory, or none, in the place of one on a path. IN_MASK_ADD, because a directory
/// may be the end of one path and lie on another.
constexpr std::uint32_t kReplaced = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_ATTRIB | IN_DELETE_SELF |
                                    IN_MOVE_SELF | IN_ONLYDIR | IN_MASK_ADD;

/// The same, and changes of files. Not that a file is read: each check reads.
constexpr std::uint32_t kChanged = kReplaced | IN_MODIFY | IN_CLOSE_WRITE;

/// As many links as the system follows in a path.
constexpr int kMostLinks = 40;

} // namespace

FileWatch::FileWatch() : events_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
{
    if (!events_.IsOpen()) {
        throw std::runtime_error("cannot watch for changes: " + std::generic_category().message(errno));
    }
}

bool FileWatch::Watch(const std::set<std::string>& directories)
{
    Places places;
    for (const std::string& directory : directories) {
        Follow(directory, places);
    }
    bool isNew = false;
    for (const auto& [watch, names] : places) {
        const auto before = places_.find(watch);
        isNew = isNew || before == places_.end() || before->second != names;
    }
    for (const auto& entry : places_) {
        if (places.count(entry.first) == 0) {
            inotify_rm_watch(events_.Get(), entry.first);
        }
    }
    places_ = std::move(places);
    return isNew;
}

/// Watches the way to a directory as far as it is there. At each link the way goes on where it leads.
void FileWatch::Follow(const std::string& directory, Places& places)
{
    namespace fs = std::filesystem;
    std::error_code error;
    const fs::path whole = fs::absolute(directory.empty() ? "." : directory, error);
    fs::path way = "/";
    std::deque<fs::path> rest;
    const auto goOnWith = [&rest](const fs::path& path) {
        std::deque<fs::path> names;
        for (const fs::path& name : path.relative_path()) {
            if (!name.empty() && name != ".") {
                names.push_back(name);
            }
        }
        rest.insert(rest.begin(), names.begin(), names.end());
    };
    goOnWith(whole);
    int links = 0;
    while (AddPlace(way.string(), rest.empty() ? "" : rest.front().string(), places) && !rest.empty()) {
        const fs::path name = rest.front();
        rest.pop_front();
        const fs::path target = fs::read_symlink(way / name, error);
        if (name == "..") {
            way = way.parent_path();
        } else if (error) {
            way /= name;
        } else if (++links <= kMostLinks) {
            way = target.is_absolute() ? "/" : way;
            goOnWith(target);
        } else {
            return;
        }
    }
}

/// False when there is no such directory.
bool FileWatch::AddPlace(const std::string& directory, const std::string& name, Places& places)
{
    const bool isEnd = name.empty();
    const int watch = inotify_add_watch(events_.Get(), directory.c_str(), isEnd ? kChanged : kReplaced);
    if (watch >= 0) {
        places[watch].insert(name);
        return true;
    }
    const int error = errno;
    // A directory on the way may be closed to reading, and so to watching, but open to passing through.
    if (isEnd && error != ENOENT && error != ENOTDIR && refused_.insert(directory).second) {
        refusals_.push_back("cannot watch " + Quoted(directory) + ": " + std::generic_category().message(error));
    }
    return error == EACCES;
}

bool FileWatch::TakeChanges()
{
    alignas(inotify_event) std::array<char, 65536> buffer;
    bool changed = false;
    ssize_t count = 0;
    while ((count = read(events_.Get(), buffer.data(), buffer.size())) > 0) {
        for (ssize_t offset = 0; offset < count;) {
            inotify_event event;
            const char* const start = buffer.data() + offset;
            std::memcpy(&event, start, sizeof event);
            const std::string name = event.len > 0 ? start + sizeof event : "";
            const auto place = places_.find(event.wd);
            const bool matters = place != places_.end() &&
                                 (name.empty() || place->second.count("") != 0 || place->second.count(name) != 0);
            changed = changed || matters || (event.mask & IN_Q_OVERFLOW) != 0;
            offset += static_cast<ssize_t>(sizeof event + event.len);
        }
    }
    return changed;
}
