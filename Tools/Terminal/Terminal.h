#pragma once

#include <cstddef>
#include <string_view>

enum class ColourMode { kAuto, kAlways, kNever };

/// Whether what is printed from now on has colours. `kAuto`, where it goes to a terminal that is not "dumb",
/// and NO_COLOR is not set.
void SetColour(ColourMode mode);

/// Whether stdout is a terminal that can be cleared.
bool CanRedraw();

/// Clears a terminal and goes to its first line.
inline constexpr char kClearScreen[] = "\033[2J\033[H";

/// Writes data to stdout and flushes it, so that a reader sees each line at once.
///
/// Returns false when the reader has gone, which is not an error. Throws `CommandError` when the data
/// cannot be written for another reason.
[[nodiscard]] bool Print(std::string_view data);

/// Writes the line "vqmctl: <text>" to stderr. Control characters and bytes that are not UTF-8 are
/// escaped, for `text` quotes what the user typed and what files hold.
void PrintError(std::string_view text);

/// The same for a note that may be empty: an empty one is not printed.
void PrintNote(std::string_view note);

/// Whether what is written to the descriptor has colours. Unless `SetColour` has said so, it has where it is a
/// terminal that can, and the user has not set NO_COLOR.
bool WantsColour(int descriptor);

/// The columns of the terminal that stdout is; 80 when it is something else or does not say.
std::size_t OutputColumns();

/// Whether the user's locale has characters beyond ASCII in UTF-8.
bool ShowsUnicode();
