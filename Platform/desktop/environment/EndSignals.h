#pragma once

/// The signals that ask a process to end: SIGTERM, SIGINT, SIGQUIT, and SIGHUP unless the process
/// was started with SIGHUP ignored. They end the main loop. A time limit stands behind it, in start-up and
/// teardown as well: a call that an X server never answers cannot be interrupted in any other way.
///
/// Use the functions once in each process, on its main thread, in the order below.
namespace desktop {

/// Ends the process at once, without the main loop and the toolkit. It runs in a signal handler, on top
/// of a call that has been stuck for seconds, and must not return.
using LeaveFunction = void (*)(const char* reason);

/// From now on the signals are recorded. A start-up that lasts two seconds after a signal, or a minute
/// without one, is ended with `leave`. Call it before the toolkit's initialisation and
/// before anything that waits for an X server.
///
/// It initialises the toolkit's main loop until `EndMainLoopOnSignal`. The first initialisation installs
/// signal handlers that do nothing before the main loop runs; done here, it cannot replace these later.
void CatchEndSignals(LeaveFunction leave);

/// True once one of the signals has arrived.
bool EndRequested();

/// Ends the start-up: from now on `quit` runs on the main loop as soon as a signal arrives, or at once if
/// one has arrived before. A main loop that goes on for eight seconds after the signal is ended with
/// `leave`. The toolkit's main loop must be initialised.
void EndMainLoopOnSignal(void (*quit)());

/// Begins the teardown: if it takes longer than eight seconds, it is ended with `leave`.
void LimitTeardown();

} // namespace desktop
