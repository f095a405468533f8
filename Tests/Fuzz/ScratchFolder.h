#pragma once

#include <string>
#include <string_view>

/// A folder of the process's own, in TMPDIR; removed at the end.
class ScratchFolder {
public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::string& Path() const { return path_; }
    std::string Path(const std::string& name) const { return path_ + "/" + name; }

    /// Writes a file over what it held. Returns its path.
    std::string Write(const std::string& name, std::string_view content) const;

private:
    std::string path_;
};
