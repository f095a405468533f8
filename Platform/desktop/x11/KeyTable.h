#pragma once

namespace desktop {

/// The remote control's keys: ids 0 to `kKeyIds - 1`, each with the name of its X keysym.
/// Letters and digits are not among them.
constexpr int kKeyIds = 193;

/// The keysym's name; null for an id outside the table.
const char* KeyName(int keyId);

/// One of the two keys that launch the companion.
bool IsToolKey(int keyId);

} // namespace desktop
