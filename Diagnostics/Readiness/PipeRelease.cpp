#include "Diagnostics/Readiness/PipeRelease.h"

#include <chrono>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <utility>

#include "Diagnostics/Readiness/SignalsBlocked.h"
#include "Platform/common/FileDescriptor.h"

namespace readiness {

namespace {

/// Between two looks. Most readings end before the first one.
constexpr std::chrono::milliseconds kInterval{200};

void ReleaseReader(const std::string& path)
{
    // What is opened for writing must be the very pipe that was looked at, not a file.
    const platform::FileDescriptor place(open(path.c_str(), O_PATH | O_CLOEXEC));
    struct stat status = {};
    if (place.IsOpen() && fstat(place.Get(), &status) == 0 && S_ISFIFO(status.st_mode)) {
        const std::string same = "/proc/self/fd/" + std::to_string(place.Get());
        // Fails without a reader; with one, both opens succeed.
        const platform::FileDescriptor writer(open(same.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC));
    }
}

} // namespace

PipeRelease::PipeRelease(std::string path) : path_(std::move(path))
{
    const SignalsBlocked blocked;
    try {
        thread_ = std::thread([this] { Run(); });
    } catch (const std::system_error&) { // NOLINT(bugprone-empty-catch): what is there is read all the same
    }
}

PipeRelease::~PipeRelease()
{
    {
        const std::lock_guard lock(mutex_);
        ended_ = true;
    }
    end_.notify_one();
    if (thread_.joinable()) {
        thread_.join();
    }
}

void PipeRelease::Run()
{
    std::unique_lock lock(mutex_);
    while (!end_.wait_for(lock, kInterval, [this] { return ended_; })) {
        ReleaseReader(path_);
    }
}

} // namespace readiness
