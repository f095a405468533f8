#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// The store behind `vconf_*`: one file per key below the settings folder, so that
/// "db/menu/syncdemo/state" is a file that holds "1". A person can read and edit it.
///
/// A key is a relative path: no empty part, no part that begins with a dot, no "..", at most
/// `kLongestKey` characters. What stands in a key's place must be a plain file of at most
/// `kLargestValue` bytes; a folder, a pipe or a link there is neither followed nor replaced.
/// Folders and files that are made here are for their owner alone (0700, 0600). What somebody else
/// made keeps its mode and, as far as the writer may decide it, its owner and group; a folder may be
/// a link.
///
/// All functions may be called from any thread. They remember why they failed, for each thread.
namespace desktop {

constexpr std::size_t kLongestKey = 512;
constexpr std::size_t kLargestValue = 4096;

/// The settings folder: "tvsettings" in $XDG_CONFIG_HOME, else in $HOME/.config. Empty when
/// neither variable holds an absolute path: a folder is not guessed.
std::string SettingsFolder();

/// The file of a key, or nothing when the key is refused or there is no settings folder.
std::optional<std::string> SettingsFile(std::string_view key);

/// The value as text. One line end at the file's end is not part of it: editors leave it there.
std::optional<std::string> ReadSetting(std::string_view key);

/// Replaces the value as a whole: readers see the old one or the new one, and a failure leaves
/// the old one in place. On disk when the call returns.
bool WriteSetting(std::string_view key, std::string_view value);

/// A whole decimal number with nothing but blanks around it.
std::optional<int> ParseSettingNumber(std::string_view text);

/// Why the calling thread's last operation failed, one sentence without a line end; empty when it
/// did not. Valid until the next operation.
const std::string& LastSettingsProblem();

/// Makes "<path>: <the errno's text>" the calling thread's problem.
void NoteSettingsProblem(const std::string& path, int error);

/// Which file stands in a key's place right now; two equal versions hold the same value.
struct SettingVersion {
    unsigned long long device = 0;
    unsigned long long inode = 0;
    long long changedSeconds = 0;
    long changedNanoseconds = 0;
    std::optional<std::string> value;

    bool operator==(const SettingVersion& other) const;
    bool operator!=(const SettingVersion& other) const { return !(*this == other); }
};

SettingVersion CurrentSettingVersion(std::string_view key);

} // namespace desktop
