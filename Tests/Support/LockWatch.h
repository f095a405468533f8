#pragma once

/// Counts the mutexes that each thread holds, of any kind that is a pthread mutex underneath:
/// those of the code that is linked into the program, not those inside shared libraries.
///
/// A program that uses it is built by `vqm_watch_locks` in Tests/CMakeLists.txt, which sends the
/// calls through here.
namespace locks {

/// How many mutexes the calling thread holds.
int Held();

/// The most that any one thread has held at once since the last `Reset`.
int MostHeld();

/// Forgets what was seen; no thread may hold a mutex then.
void Reset();

} // namespace locks
