#pragma once

namespace desktop {

/// The id of the application that this build belongs to. Usable from constructor functions.
extern const char* const kApplicationId;

} // namespace desktop
