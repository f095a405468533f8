#pragma once

#include <string>
#include <string_view>

/// Writes a file of the command line, completely or not at all: a file that is there already keeps its
/// content when something fails, and its mode otherwise. A link is followed.
///
/// Throws `CommandError` with the cause, and for what is there but is not a regular file.
void WriteOutputFile(const std::string& name, std::string_view content);
