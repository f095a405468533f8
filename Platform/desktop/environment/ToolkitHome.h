#pragma once

namespace desktop {

/// True when the environment variable names a folder in which this process can make files.
bool NamesWritableFolder(const char* variable);

/// Gives the toolkit a home below XDG_RUNTIME_DIR when HOME names a folder that cannot be written.
/// Does nothing otherwise, or when XDG_RUNTIME_DIR cannot be written either.
///
/// The toolkit creates folders for its caches and configuration in the home and reports each failure
/// with a backtrace. Everything else that programs look for in the home stays where it was: settings,
/// desktop entries, the X authority. A launched program gets the original environment.
///
/// Must run before the toolkit is initialised. Usable from constructor functions.
void GiveToolkitWritableHome();

} // namespace desktop
