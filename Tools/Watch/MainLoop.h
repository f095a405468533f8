#pragma once

#include <Ecore.h>

/// Ecore's main loop, for a command that waits for events until SIGINT, SIGTERM or SIGQUIT.
///
/// One at a time, on the thread that made it.
class MainLoop {
public:
    /// Throws `CommandError` when Ecore cannot start.
    MainLoop();
    ~MainLoop();

    MainLoop(const MainLoop&) = delete;
    MainLoop& operator=(const MainLoop&) = delete;

    /// Ends the loop as soon as nobody reads stdout any more, if that is a pipe or a socket.
    void EndWithReader();

    /// Runs until `End` or a signal. Gives at once when the loop has been ended before.
    void Run();

    void End();

private:
    bool ended_ = false;
    Ecore_Event_Handler* signalHandler_ = nullptr;
    Ecore_Fd_Handler* readerWatch_ = nullptr;
};
