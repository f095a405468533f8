#include "Tools/Watch/MainLoop.h"

#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>

#include "Tools/CommandError.h"

namespace {

Eina_Bool OnSignal(void* data, int /*type*/, void* /*event*/)
{
    static_cast<MainLoop*>(data)->End();
    return ECORE_CALLBACK_RENEW;
}

Eina_Bool OnReaderGone(void* data, Ecore_Fd_Handler* /*handler*/)
{
    static_cast<MainLoop*>(data)->End();
    return ECORE_CALLBACK_RENEW;
}

} // namespace

MainLoop::MainLoop()
{
    // Power and locale daemons are no business of a tool, and asking for them is noisy without a system bus.
    setenv("ECORE_NO_SYSTEM_MODULES", "1", 0);
    if (ecore_init() <= 0) {
        throw CommandError(ExitCode::kCouldNotRun, "cannot start the Ecore main loop");
    }
    signalHandler_ = ecore_event_handler_add(ECORE_EVENT_SIGNAL_EXIT, OnSignal, this);
}

MainLoop::~MainLoop()
{
    if (readerWatch_ != nullptr) {
        ecore_main_fd_handler_del(readerWatch_);
    }
    ecore_event_handler_del(signalHandler_);
    ecore_shutdown();
}

void MainLoop::EndWithReader()
{
    struct stat output = {};
    if (readerWatch_ == nullptr && fstat(STDOUT_FILENO, &output) == 0 &&
        (S_ISFIFO(output.st_mode) || S_ISSOCK(output.st_mode))) {
        readerWatch_ = ecore_main_fd_handler_add(STDOUT_FILENO, ECORE_FD_ERROR, OnReaderGone, this, nullptr, nullptr);
    }
}

void MainLoop::Run()
{
    if (!ended_) {
        ecore_main_loop_begin();
    }
}

void MainLoop::End()
{
    ended_ = true;
    ecore_main_loop_quit();
}
