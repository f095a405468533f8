#pragma once

#include <cstddef>
#include <string>

/// Breaks the lines of a help text that are wider than `columns`. A line of two columns goes on below its
/// second one, another one below its own beginning. A word that is wider stays whole.
std::string WrappedHelp(const std::string& help, std::size_t columns);

/// How wide help may be: as the terminal on stdout, at most 100 columns; 80 where stdout is none.
std::size_t HelpColumns();

/// An example for a command, such as "vqmctl check --watch", by the command's full name. Empty for none.
std::string ExampleFor(const std::string& command);
