#pragma once

/// The signals that ask a process to end: SIGTERM, SIGINT, SIGQUIT, and SIGHUP unless the process
/// was started with SIGHUP ignored. They end the main loop. Where there is no main loop that could
/// end, in start-up and in teardown, a time limit stands in for it: a call that an X server never
/// answers cannot be interrupted in any other way.
///
/// One use for each process, on its main thread, in the order of the functions below.
namespace desktop {

/// Ends the process at once, without the main loop and without the toolkit. It runs in a signal
/// handler, on top of a call that has been stuck for seconds; must not return.
using LeaveFunction = void (*)(const char* reason);

/// From now on the signals are noted. A start-up that goes on for two seconds after a signal, or
/// for a minute without one, is ended with `leave`. Call it before the toolkit's initialisation and
/// before anything that waits for an X server.
///
/// It initialises the toolkit's main loop for the time until `EndMainLoopOnSignal`: that installs
/// handlers that do nothing before the main loop runs, and only the first initialisation does.
void CatchEndSignals(LeaveFunction leave);

/// True once one of the signals has arrived.
bool EndRequested();

/// The start-up is over: from now on `quit` runs on the main loop as soon as a signal arrives, or
/// has arrived before. The toolkit's main loop must be initialised.
void EndMainLoopOnSignal(void (*quit)());

/// The main loop has ended: teardown that goes on for eight seconds is ended with `leave`.
void LimitTeardown();

} // namespace desktop
