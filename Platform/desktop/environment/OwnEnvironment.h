#pragma once

#include <vector>

/// Environment variables that the platform sets for this process alone. A launched program gets
/// the environment as it was found.
///
/// Main thread only. Usable from constructor functions, before static objects are built.
namespace desktop {

/// Sets a variable for this process and remembers what was there before.
/// `name` must live for ever (a literal); at most eight variables can be set.
void SetOwnVariable(const char* name, const char* value);

/// The environment for a launched program, ended by a null pointer: ours, with own variables back
/// at what they were found as, and without those that speak to this process only.
/// The pointers are valid until the environment next changes.
std::vector<char*> EnvironmentToHandOn();

} // namespace desktop
