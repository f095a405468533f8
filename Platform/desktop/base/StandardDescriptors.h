#pragma once

#include "Platform/desktop/base/FileDescriptor.h"

namespace desktop {

/// Opens what is closed of the descriptors 0, 1 and 2, so that no file that is opened later becomes
/// one of them. A reader of such a descriptor 0 and a writer of 1 or 2 still fails with EBADF, as if
/// it were closed.
///
/// ProcessStart.cpp runs it in every program of this project, before any library is initialised.
void OpenStandardDescriptors();

/// Opens what the descriptor leads to, a pipe or a terminal, once more for writing without blocking:
/// the flags of what other processes share stay as they are. Not open where that is not allowed.
FileDescriptor OpenWithoutBlocking(int descriptor);

/// Keeps this process from being blocked by a reader of stderr that has stopped, for programs whose
/// libraries write there themselves. What they write meanwhile is lost.
void KeepStandardErrorFromBlocking();

} // namespace desktop
