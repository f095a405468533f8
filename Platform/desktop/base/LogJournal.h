#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Platform/desktop/base/LogSink.h"

namespace desktop {

/// Whether the descriptor leads to the system's journal.
bool IsJournal(int descriptor);

/// The sink for entries; none when the journal does not answer.
std::optional<LogSink> ConnectToJournal();

/// A message as an entry of the journal, with its priority, tag and, when it begins with
/// "<file>: <function>(<line>) > ", its place in the source. The texts must be free of line ends.
std::string JournalEntry(int priority, std::string_view tag, std::string_view message);

} // namespace desktop
