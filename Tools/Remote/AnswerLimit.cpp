#include "Tools/Remote/AnswerLimit.h"

#include <csignal>
#include <sys/time.h>
#include <unistd.h>

#include "Diagnostics/Text/TerminalText.h"
#include "Tools/ExitCode.h"

namespace {

/// Composed beforehand, because a signal handler must not allocate memory.
std::string& Message()
{
    static std::string message;
    return message;
}

const char* messageText = nullptr;
std::size_t messageSize = 0;

void OnAlarm(int /*number*/)
{
    // A failure is ignored: there is no other place to report it.
    static_cast<void>(write(STDERR_FILENO, messageText, messageSize) == 0);
    _exit(static_cast<int>(ExitCode::kCouldNotRun));
}

void SetTimer(std::chrono::seconds time)
{
    itimerval timer = {};
    timer.it_value.tv_sec = static_cast<time_t>(time.count());
    setitimer(ITIMER_REAL, &timer, nullptr);
}

} // namespace

AnswerLimit::AnswerLimit(const std::string& display, std::chrono::seconds limit)
{
    Message() = "vqmctl: display '" + EscapedForTerminal(display) + "' does not answer\n";
    messageText = Message().data();
    messageSize = Message().size();
    std::signal(SIGALRM, OnAlarm);
    // The parent may have blocked it.
    sigset_t alarm;
    sigemptyset(&alarm);
    sigaddset(&alarm, SIGALRM);
    sigprocmask(SIG_UNBLOCK, &alarm, nullptr);
    SetTimer(limit);
}

AnswerLimit::~AnswerLimit()
{
    SetTimer(std::chrono::seconds(0));
}
