#pragma once

#include <string_view>

/// Where log lines go: to what stderr was when the first line was written.
///
/// A line for which there is no room waits a moment; then it is dropped and counted, and for a while
/// no other line is tried. Lines may wait a second in all, and after that a twentieth of the time:
/// a reader that is slow costs lines, one that stops does not stop the program.
///
/// All functions may be called from any thread, `ExamineStandardError` while no other one runs.
namespace desktop {

/// Writes all of `line` to stderr, in one write unless the system cuts it short. Returns false when
/// not everything could be written: the line is counted as dropped.
bool WriteToStandardError(std::string_view line);

/// stderr is a terminal that may be sent colours.
bool StandardErrorHasColours();

/// stderr leads to the system's journal.
bool StandardErrorIsJournal();

enum class JournalAnswer {
    kTaken,
    kDropped, ///< no room; counted as dropped
    kRefused, ///< it does not take the message this way, as when that is too large for an entry
};

/// Hands a message to the journal with its priority and tag; the texts must be free of line ends.
JournalAnswer WriteToJournal(int priority, std::string_view tag, std::string_view message);

/// How many lines were dropped since the last call, as soon as another one may be tried; else 0.
unsigned long long TakeDroppedLines();

/// What was taken could not be told.
void PutBackDroppedLines(unsigned long long lines);

/// Takes what descriptor 2 is by now for stderr: for a program that has put something else there.
void ExamineStandardError();

} // namespace desktop
