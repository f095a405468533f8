#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace readiness {

/// Keeps a reading of `path` from waiting for ever where a named pipe has taken the file's place.
///
/// The library opens files by name and waits for a pipe's writer; what was examined may have been
/// replaced by then. While this object lives, a pipe there that is waited for is opened for writing and
/// closed again: it then reads as empty.
class PipeRelease {
public:
    explicit PipeRelease(std::string path);
    ~PipeRelease();

    PipeRelease(const PipeRelease&) = delete;
    PipeRelease& operator=(const PipeRelease&) = delete;

private:
    void Run();

    std::string path_;
    std::mutex mutex_;
    std::condition_variable end_;
    bool ended_ = false;
    std::thread thread_; ///< last: it uses the others
};

} // namespace readiness
