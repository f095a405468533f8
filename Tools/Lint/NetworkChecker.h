#pragma once

#include "Tools/Lint/Reporter.h"
#include "Tools/Lint/StartTag.h"

namespace lint {

/// Checks a `rech_info` whose values do not fit each other.
void CheckNetwork(const StartTag& tag, Reporter& reporter);

} // namespace lint
