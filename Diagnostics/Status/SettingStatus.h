#pragma once

#include <optional>
#include <string>

namespace status {

/// The sync-demo setting and where it is stored. Texts are as found: not escaped.
struct SettingStatus {
    bool enabled = false;              ///< as the library counts it
    std::string file;                  ///< empty when there is no settings folder; on the TV, `SettingPlace`
    std::optional<std::string> stored; ///< none: nothing is stored, or it cannot be read
    std::string problem;               ///< why it cannot be read; empty when it can, or nothing is stored
};

/// "on" or "off".
inline const char* NameOfSetting(bool enabled)
{
    return enabled ? "on" : "off";
}

/// Whether what is stored is something else than the two values that are meant.
inline bool IsStrange(const SettingStatus& setting)
{
    return setting.stored && *setting.stored != "0" && *setting.stored != "1";
}

SettingStatus CollectSetting();

/// Where it is stored, for a person.
std::string SettingPlace();

/// Why the store failed in the last call of the library; empty when it did not. The TV's store does not
/// say whether it failed, so there the text is never empty.
std::string StoreProblem();

} // namespace status
