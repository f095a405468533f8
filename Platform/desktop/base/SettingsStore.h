#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/desktop/base/Result.h"

/// The store behind `vconf_*`: one file per key below the settings folder, so that
/// "db/menu/syncdemo/state" is a file that holds "1". A person can read and edit it.
///
/// A key is a relative path: no empty part, no part that begins with a dot, no "..", at most
/// `kLongestKey` characters. A key's file must be a plain file of at most `kLargestValue` bytes; a
/// folder, a pipe or a link in its place is neither followed nor replaced.
/// Folders and files that the store creates belong to their owner alone (0700, 0600). Existing ones keep
/// their mode and, as far as the writer may decide it, their owner and group; a folder may be a link.
///
/// All functions may be called from any thread. Errors name the key or the path.
namespace desktop {

constexpr std::size_t kLongestKey = 512;
constexpr std::size_t kLargestValue = 4096;

/// The settings folder: "tvsettings" in $XDG_CONFIG_HOME, else in $HOME/.config. Empty when
/// neither variable holds an absolute path: the store does not guess a folder.
std::string SettingsFolder();

/// The path of a key's file, whether it exists or not. Fails when the key is refused or there is no
/// settings folder.
Result<std::string> SettingsFile(std::string_view key);

/// The value as text. One line end at the file's end is not part of it: editors leave it there.
Result<std::string> ReadSetting(std::string_view key);

/// Replaces the value as a whole: readers see the old one or the new one, and a failure leaves
/// the old one in place. On disk when the call returns.
Result<void> WriteSetting(std::string_view key, std::string_view value);

/// A whole decimal number with nothing but blanks around it.
std::optional<int> ParseSettingNumber(std::string_view text);

/// The state of a key's file; two equal versions hold the same value.
struct SettingVersion {
    unsigned long long device = 0;
    unsigned long long inode = 0;
    long long changedSeconds = 0;
    long changedNanoseconds = 0;
    std::optional<std::string> value; ///< none: it cannot be read

    bool operator==(const SettingVersion& other) const;
    bool operator!=(const SettingVersion& other) const { return !(*this == other); }
};

SettingVersion CurrentSettingVersion(std::string_view key);

} // namespace desktop
