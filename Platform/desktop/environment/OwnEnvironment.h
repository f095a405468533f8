#pragma once

#include <vector>

/// Environment variables that the platform sets for this process alone. A launched program gets the
/// environment that this process was started with.
///
/// Main thread only. Usable from constructor functions, before static objects are built.
namespace desktop {

/// Sets a variable for this process and remembers its earlier value.
/// `name` must be a literal; at most eight variables can be set.
void SetOwnVariable(const char* name, const char* value);

/// The environment for a launched program, ended by a null pointer: this process's, with the earlier
/// values of its own variables, and without the variables that were meant for this process alone.
/// The pointers are valid until the environment changes.
std::vector<char*> EnvironmentToHandOn();

} // namespace desktop
