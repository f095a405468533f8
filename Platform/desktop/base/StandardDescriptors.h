#pragma once

#include "Platform/common/FileDescriptor.h"

namespace desktop {

/// Opens those of the descriptors 0, 1 and 2 that are closed, so that no file that is opened later gets
/// one of their numbers. Reading such a descriptor 0 and writing to such a 1 or 2 still fails with EBADF,
/// as if it were closed.
///
/// ProcessStart.cpp runs it in every program of this project, before any library is initialised.
void OpenStandardDescriptors();

/// Opens the pipe or terminal behind the descriptor once more, for writing without blocking. The flags of
/// the original, which other processes share, stay as they are. Not open where that is not allowed.
platform::FileDescriptor OpenWithoutBlocking(int descriptor);

/// Keeps a stopped reader of stderr from blocking this process, for programs whose libraries write there
/// themselves. What they write in the meantime is lost.
void KeepStandardErrorFromBlocking();

} // namespace desktop
