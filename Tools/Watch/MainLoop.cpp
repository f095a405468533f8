#include "Tools/Watch/MainLoop.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <poll.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "Tools/CommandError.h"

namespace {

constexpr std::array<int, 4> kEndingSignals = {SIGINT, SIGTERM, SIGQUIT, SIGHUP};

volatile std::sig_atomic_t signalled = 0;
MainLoop* current = nullptr;

void OnSignal(int /*number*/)
{
    signalled = 1;
}

sigset_t EndingSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : kEndingSignals) {
        sigaddset(&signals, number);
    }
    return signals;
}

void Catch(int number)
{
    struct sigaction action = {};
    action.sa_handler = OnSignal;
    action.sa_flags = static_cast<int>(SA_RESETHAND); // a second signal ends the process
    sigaction(number, &action, nullptr);
}

bool IsIgnored(int number)
{
    struct sigaction action = {};
    return sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

} // namespace

MainLoop::MainLoop()
{
    for (const int number : kEndingSignals) {
        // An ignored SIGHUP is the user's wish: nohup. An ignored SIGINT need not be: a shell ignores it for a command
        // in the background.
        if (number != SIGHUP || !IsIgnored(number)) {
            Catch(number);
        }
    }
    // The parent may have blocked them.
    const sigset_t ending = EndingSignals();
    sigprocmask(SIG_UNBLOCK, &ending, nullptr);
    current = this;
}

MainLoop::~MainLoop()
{
    current = nullptr;
}

MainLoop* MainLoop::Current()
{
    return current;
}

void MainLoop::OnReadable(int descriptor, Action action)
{
    sources_.push_back({descriptor, POLLIN, std::move(action)});
}

void MainLoop::EndWithReader()
{
    struct stat output = {};
    const bool hasReader = fstat(STDOUT_FILENO, &output) == 0 &&
                           (S_ISFIFO(output.st_mode) || S_ISSOCK(output.st_mode) || isatty(STDOUT_FILENO) == 1);
    if (hasReader) {
        // No event is asked for: errors and hang-ups are always reported.
        sources_.push_back({STDOUT_FILENO, 0, [this] { End(); }});
    }
}

void MainLoop::Run()
{
    std::vector<pollfd> polled;
    while (!ended_) {
        polled.clear();
        for (const Source& source : sources_) {
            polled.push_back({source.descriptor, source.events, 0});
        }
        if (!Wait(polled)) {
            return;
        }
        for (std::size_t index = 0; index < polled.size(); ++index) {
            if (polled[index].revents != 0) {
                const Action action = sources_[index].action; // may add a source
                action();
            }
        }
        RunTimers();
    }
}

bool MainLoop::Wait(std::vector<pollfd>& polled) const
{
    // A signal between the look at the flag and the wait must end the wait. So the signals are blocked here, and
    // `ppoll` unblocks them while it waits.
    const sigset_t ending = EndingSignals();
    sigset_t before;
    sigprocmask(SIG_BLOCK, &ending, &before);
    bool goOn = signalled == 0;
    if (goOn) {
        const int milliseconds = TimeToWait();
        const timespec time = {milliseconds / 1000, milliseconds % 1000 * 1'000'000L};
        const int ready = ppoll(polled.data(), polled.size(), milliseconds < 0 ? nullptr : &time, &before);
        const int error = errno;
        if (ready < 0) {
            for (pollfd& entry : polled) {
                entry.revents = 0;
            }
        }
        goOn = signalled == 0;
        if (ready < 0 && error != EINTR) {
            sigprocmask(SIG_SETMASK, &before, nullptr);
            throw CommandError(ExitCode::kCouldNotRun,
                               "cannot wait for changes: " + std::generic_category().message(error));
        }
    }
    sigprocmask(SIG_SETMASK, &before, nullptr);
    return goOn;
}

/// In milliseconds, rounded up; -1 without a timer.
int MainLoop::TimeToWait() const
{
    auto due = Clock::time_point::max();
    for (const LoopTimer* timer : timers_) {
        due = timer->running_ ? std::min(due, timer->due_) : due;
    }
    if (due == Clock::time_point::max()) {
        return -1;
    }
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(due - Clock::now()).count();
    return static_cast<int>(std::clamp<long long>(left, 0, INT_MAX));
}

void MainLoop::RunTimers()
{
    const Clock::time_point now = Clock::now();
    for (LoopTimer* timer : timers_) {
        if (timer->running_ && timer->due_ <= now) {
            timer->running_ = false;
            timer->action_();
        }
    }
}

LoopTimer::LoopTimer(MainLoop& loop, MainLoop::Action action) : action_(std::move(action))
{
    loop.timers_.push_back(this);
}

void LoopTimer::StartAt(MainLoop::Clock::time_point due)
{
    running_ = true;
    due_ = due;
}
