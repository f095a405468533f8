#pragma once

#include <functional>
#include <memory>
#include <string>

#include "Companion/Model/Screen.h"
#include "Diagnostics/Watch/FileWatch.h"

namespace companion {

/// What a check came to.
struct Checked {
    Screen screen{};
    int second = 0;        ///< of the day that the screen is about
    std::string problem{}; ///< why there is no screen; empty when there is one
};

/// Checks on a thread of its own, and watches what the last check looked at: one check at a time, however
/// long a disk lets it wait. Lives on the thread of the toolkit's main loop.
class BackgroundCheck {
public:
    /// `done` and `onChange` run on the main loop. Throws `std::runtime_error` when the system gives no watch.
    BackgroundCheck(std::function<void(Checked)> done, std::function<void()> onChange);

    /// Drops the result of a check that still runs, and leaves its thread behind: the process has to be ended
    /// without waiting for it.
    ~BackgroundCheck();

    BackgroundCheck(const BackgroundCheck&) = delete;
    BackgroundCheck& operator=(const BackgroundCheck&) = delete;

    /// Starts a check, or another one as soon as the one that runs has ended.
    void Start();

    bool IsRunning() const;

private:
    struct Round;

    void Finish(Round& round);
    void WatchAgain();

    std::function<void(Checked)> done_;
    std::function<void()> onChange_;
    std::shared_ptr<FileWatch> files_; ///< used by the thread alone while a check runs
    std::shared_ptr<Round> round_;     ///< null: no check runs
    bool again_ = false;
    void* readable_ = nullptr; ///< Ecore's handler of the watch's descriptor; null while a check runs
};

} // namespace companion
