#pragma once

namespace desktop {

/// Answers `--help` and `--version`, wherever they stand among the arguments, on stdout and ends the
/// process: with 0, or with 1 when the answer cannot be written. Returns when neither is asked for.
///
/// Usable from constructor functions, before static objects are built. Needs no display.
void AnswerCommandLine(int argc, char** argv);

} // namespace desktop
