#pragma once

#include <string_view>

namespace desktop {

/// Writes all of `data` to stderr, in one write unless the system cuts it short. A reader that is
/// gone, or one that lets a non-blocking stderr stay full, costs the line and nothing else.
/// Returns false when not everything could be written.
bool WriteToStandardError(std::string_view data);

/// stderr is a terminal that may be sent colours. Decided once per process.
bool StandardErrorHasColours();

/// stderr leads to the system's journal. Decided once per process.
bool StandardErrorIsJournal();

/// Hands a message to the journal with its priority, tag and, when it begins with
/// "<file>: <function>(<line>) > ", its place in the source. False: the journal did not take it.
bool WriteToJournal(int priority, std::string_view tag, std::string_view message);

} // namespace desktop
