#pragma once

#include <optional>
#include <string>

namespace status {

/// The sync-demo setting and where it is stored. Texts are as found: not escaped.
struct SettingStatus {
    bool enabled = false;              ///< as the library counts it
    std::string file;                  ///< empty when there is no settings folder
    std::optional<std::string> stored; ///< none: nothing is stored, or it cannot be read
    std::string problem;               ///< why it cannot be read; empty when it can, or nothing is stored
};

/// Whether what is stored is something else than the two values that are meant.
bool IsStrange(const SettingStatus& setting);

SettingStatus CollectSetting();

} // namespace status
