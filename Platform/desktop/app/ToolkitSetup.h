#pragma once

namespace desktop {

/// Prepares the process for the toolkit. Must run before the toolkit is initialised and before Xlib first
/// translates a key's name. Ends the process with a clear log line where the toolkit would abort.
void PrepareForToolkit();

} // namespace desktop
