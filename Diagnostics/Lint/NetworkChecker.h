#pragma once

#include "Diagnostics/Lint/Reporter.h"
#include "Diagnostics/Lint/StartTag.h"

namespace lint {

/// Checks a `rech_info` whose values do not fit each other.
void CheckNetwork(const StartTag& tag, Reporter& reporter);

} // namespace lint
