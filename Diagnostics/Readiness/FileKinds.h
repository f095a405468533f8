#pragma once

#include <sys/types.h>

namespace readiness {

/// Whether this error of the system says that there is nothing, rather than that one cannot tell.
bool IsAbsence(int error);

/// "a directory", "a pipe"
const char* KindName(mode_t mode);

} // namespace readiness
