#pragma once

namespace desktop {

/// Answers `--help` and `--version` at any position among the arguments: prints to stdout and ends the
/// process, with 0, or with 1 when the output cannot be written. Otherwise returns.
///
/// Usable from constructor functions, before static objects are built. Needs no display.
void AnswerCommandLine(int argc, char** argv);

} // namespace desktop
