#pragma once

#include <string_view>

/// Where log lines go: to what stderr was when the first line was written.
///
/// A line that finds no room waits a moment; then it is dropped and counted, and for a second no other
/// line is tried. Lines may wait one second in total, and after that a twentieth of the time that passes:
/// a slow reader loses lines, and a stopped one does not stop the program.
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
    kRefused, ///< the journal does not take the message as an entry, for example because it is too large
};

/// Hands a message to the journal with its priority and tag; the texts must be free of line ends.
JournalAnswer WriteToJournal(int priority, std::string_view tag, std::string_view message);

/// How many lines were dropped since the last call; 0 while no other line may be tried.
unsigned long long TakeDroppedLines();

/// Counts lines again whose number could not be logged.
void PutBackDroppedLines(unsigned long long lines);

/// Looks at descriptor 2 again, for a program that has replaced it.
void ExamineStandardError();

} // namespace desktop
