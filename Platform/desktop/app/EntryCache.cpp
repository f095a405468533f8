#include "Platform/desktop/app/EntryCache.h"

#include <utility>

namespace desktop {

Result<EntryCache::Entry*> EntryCache::Get(const EntryFile& file)
{
    if (settled_ && file == file_) {
        return &entry_;
    }
    settled_ = false;
    const bool settled = HasSettled(file); // asked before the content is read
    Result<DesktopEntry> content = ReadEntry(file);
    if (!content) {
        return Problem{content.ProblemText()};
    }
    entry_ = {file.path, std::move(*content), ""};
    file_ = file;
    settled_ = settled;
    return &entry_;
}

} // namespace desktop
