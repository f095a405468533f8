#include "Platform/desktop/environment/EndSignals.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <sys/eventfd.h>
#include <unistd.h>

#include <Ecore.h>

namespace desktop {

namespace {

using std::chrono::seconds;

/// Long enough for a slow machine, and for an X server that is stopped for a moment.
constexpr seconds kStartUpTimeout{60};
constexpr seconds kStartUpTimeoutAfterSignal{2};
/// The main loop may be in a call that an X server never answers.
constexpr seconds kMainLoopTimeoutAfterSignal{8};
/// Restoring popups takes at most two seconds of it.
constexpr seconds kTeardownTimeout{8};

constexpr std::array<int, 4> kSignals = {SIGTERM, SIGINT, SIGQUIT, SIGHUP};

enum Phase : std::sig_atomic_t { kStartUp, kRunning, kTeardown };

// The signal handlers touch only these.
volatile std::sig_atomic_t phase = kStartUp;
volatile std::sig_atomic_t requested = 0;
volatile std::sig_atomic_t wakeUp = -1;
LeaveFunction leaveNow = nullptr;

void (*quitLoop)() = nullptr;

void SetAlarm(seconds timeout)
{
    alarm(static_cast<unsigned int>(timeout.count()));
}

/// Sets the limit that a signal brings. The teardown keeps its own limit.
void LimitWaitForEnd()
{
    if (phase != kTeardown) {
        SetAlarm(phase == kStartUp ? kStartUpTimeoutAfterSignal : kMainLoopTimeoutAfterSignal);
    }
}

void OnSignal(int /*signal*/)
{
    const int error = errno;
    // Only the first signal sets a limit: further ones must not postpone the end.
    if (requested == 0) {
        requested = 1;
        LimitWaitForEnd();
    }
    const std::uint64_t one = 1;
    // It fails only when the counter is full, and then the loop wakes up anyway.
    [[maybe_unused]] const ssize_t written = write(wakeUp, &one, sizeof one);
    errno = error;
}

void OnAlarm(int /*signal*/)
{
    if (phase == kTeardown) {
        leaveNow("the end takes too long, the X server may be stopped");
    } else if (phase == kRunning) {
        leaveNow("told to end, but the main loop waits, perhaps for the X server");
    } else if (requested != 0) {
        leaveNow("told to end in the middle of a start-up that waits, perhaps for the X server");
    } else {
        leaveNow("the start takes too long, the X server may be stopped");
    }
}

void Handle(int signal, void (*handler)(int), int flags)
{
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = flags;
    sigaction(signal, &action, nullptr);
}

Eina_Bool OnWakeUp(void* /*data*/, Ecore_Fd_Handler* /*handler*/)
{
    std::uint64_t count = 0;
    [[maybe_unused]] const ssize_t taken = read(wakeUp, &count, sizeof count);
    quitLoop();
    return ECORE_CALLBACK_RENEW;
}

/// For a signal that arrived at the very beginning, while the toolkit's own handlers were installed.
Eina_Bool OnToolkitSignal(void* /*data*/, int /*type*/, void* /*event*/)
{
    quitLoop();
    return ECORE_CALLBACK_PASS_ON;
}

} // namespace

void CatchEndSignals(LeaveFunction leave)
{
    struct sigaction hangup = {};
    sigaction(SIGHUP, nullptr, &hangup);
    const bool hangupIgnored = hangup.sa_handler == SIG_IGN; // nohup

    leaveNow = leave;
    wakeUp = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    ecore_init();
    // SA_NODEFER, because the leaving function sets another alarm, whose signal must be delivered.
    Handle(SIGALRM, OnAlarm, SA_RESTART | SA_NODEFER);
    SetAlarm(kStartUpTimeout);
    for (const int signal : kSignals) {
        Handle(signal, signal == SIGHUP && hangupIgnored ? SIG_IGN : OnSignal, SA_RESTART);
    }
}

bool EndRequested()
{
    return requested != 0;
}

void EndMainLoopOnSignal(void (*quit)())
{
    phase = kRunning;
    alarm(0);
    if (requested != 0) {
        LimitWaitForEnd(); // `alarm(0)` may have cancelled the limit that the signal set
    }
    quitLoop = quit;
    ecore_main_fd_handler_add(wakeUp, ECORE_FD_READ, OnWakeUp, nullptr, nullptr, nullptr);
    ecore_event_handler_add(ECORE_EVENT_SIGNAL_EXIT, OnToolkitSignal, nullptr);
    ecore_shutdown(); // the toolkit keeps the loop from here on
}

void LimitTeardown()
{
    phase = kTeardown;
    SetAlarm(kTeardownTimeout);
}

} // namespace desktop
