#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <sys/stat.h>

/// A document that is read as a whole in order to be edited, and the file that it came from.
class EditableFile {
public:
    /// The largest document that is edited, in bytes. Half a million items fit.
    static constexpr std::size_t kMaxSize = 67108864;

    /// What the file is to be used for.
    enum class Use {
        kRead,    ///< anything that can be read: a link, a pipe, stdin for "-"
        kReplace, ///< a regular file of this user's, under one name and not behind a link
    };

    /// Reads the file. Throws `std::runtime_error` with a message that names it when it cannot be read, is
    /// larger than `kMaxSize`, or cannot be replaced while that is the use.
    EditableFile(const std::string& name, Use use);

    /// Its bytes, whatever they are.
    const std::string& Content() const { return content_; }

    /// Replaces the file, which was opened for that, completely or not at all: a process that is killed
    /// leaves the old file or the new one, and at most a temporary file, ".vqmctl-new-" and some letters,
    /// which the next replacement in that folder removes. Mode, owner and group stay.
    ///
    /// Throws `std::runtime_error` with a message that names the file, which is then unchanged: when
    /// another file has taken its place, its content has changed since it was read, or the system refuses.
    /// What another process writes to the file in the moment between this check and the replacement is lost.
    void Replace(std::string_view content) const;

private:
    [[noreturn]] void Refuse(const std::string& what, const std::string& why) const;
    void CheckReplaceable(const struct stat& status) const;
    void CheckUnchanged() const;

    std::string name_;
    std::string content_;
    struct stat status_ {}; ///< of what was read
};
