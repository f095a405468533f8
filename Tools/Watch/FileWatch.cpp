#include "Tools/Watch/FileWatch.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

#include <sys/inotify.h>
#include <unistd.h>

#include "Tools/CommandError.h"
#include "Tools/Terminal/Terminal.h"

namespace {

/// Whatever makes another of what is there; not reading, which is what a check does.
constexpr std::uint32_t kChanges = IN_CREATE | IN_DELETE | IN_MODIFY | IN_CLOSE_WRITE | IN_MOVED_FROM | IN_MOVED_TO |
                                   IN_ATTRIB | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;

} // namespace

FileWatch::FileWatch(std::function<void()> onChange)
    : onChange_(std::move(onChange)), descriptor_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
{
    if (descriptor_ < 0) {
        throw CommandError(ExitCode::kCouldNotRun,
                           "cannot watch for changes: " + std::generic_category().message(errno));
    }
    handler_ = ecore_main_fd_handler_add(descriptor_, ECORE_FD_READ, OnReadable, this, nullptr, nullptr);
}

FileWatch::~FileWatch()
{
    ecore_main_fd_handler_del(handler_);
    close(descriptor_);
}

bool FileWatch::Add(const std::string& directory)
{
    for (std::filesystem::path place = directory.empty() ? "." : directory;; place = place.parent_path()) {
        const int watch = inotify_add_watch(descriptor_, place.empty() ? "." : place.c_str(), kChanges);
        if (watch >= 0) {
            return watches_.insert(watch).second;
        }
        const int error = errno;
        if (error != ENOENT && error != ENOTDIR) {
            if (refused_.insert(place.string()).second) {
                PrintError("note: cannot watch '" + place.string() + "': " + std::generic_category().message(error));
            }
            return false;
        }
        if (place == place.parent_path()) {
            return false;
        }
    }
}

Eina_Bool FileWatch::OnReadable(void* data, Ecore_Fd_Handler* /*handler*/)
{
    static_cast<FileWatch*>(data)->Drain();
    return ECORE_CALLBACK_RENEW;
}

void FileWatch::Drain()
{
    alignas(inotify_event) std::array<char, 65536> buffer;
    ssize_t count = 0;
    while ((count = read(descriptor_, buffer.data(), buffer.size())) > 0) {
        for (ssize_t offset = 0; offset < count;) {
            inotify_event event;
            std::memcpy(&event, buffer.data() + offset, sizeof event);
            if ((event.mask & IN_IGNORED) != 0) {
                watches_.erase(event.wd);
            }
            offset += static_cast<ssize_t>(sizeof event + event.len);
        }
    }
    onChange_();
}
