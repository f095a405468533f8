#include "Platform/common/ReplaceFile.h"

#include <sys/stat.h>

#include "Platform/common/TemporaryFile.h"

namespace platform {

namespace {

constexpr char kPrefix[] = ".tvsettings-new-";

} // namespace

Result<void> ReplaceFile(const std::string& path, std::string_view content)
{
    TemporaryFile::RemoveLeftBehind(path, kPrefix);
    Result<TemporaryFile> file = TemporaryFile::CreateFor(path, kPrefix);
    if (!file) {
        return file.Error();
    }
    // A link is replaced itself, so the mode of the file behind it does not matter.
    struct stat old {};
    if (lstat(path.c_str(), &old) == 0 && S_ISREG(old.st_mode)) {
        file->TakeOver(old);
    }
    if (Result<void> written = file->Write(content); !written) {
        return written;
    }
    return file->Rename();
}

} // namespace platform
