#pragma once

#include "Platform/common/Result.h"

namespace desktop {

using platform::Error;
using platform::Result;
using platform::SystemError;

} // namespace desktop
