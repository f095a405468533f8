#include "Tools/Terminal/OutputFile.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

#include "Platform/common/FileDescriptor.h"
#include "Platform/common/ReplaceFile.h"
#include "Tools/CommandError.h"

namespace {

namespace fs = std::filesystem;

[[noreturn]] void Refuse(const std::string& name, const std::string& why)
{
    throw CommandError(ExitCode::kCouldNotRun, "cannot write '" + name + "': " + why);
}

/// Makes an empty file, whose mode comes from the user's umask; the file that replaces it takes the mode over.
/// Returns false when the name is taken.
bool Create(const std::string& name)
{
    constexpr mode_t kForAll = 0666;
    const platform::FileDescriptor file(open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kForAll));
    if (!file.IsOpen() && errno != EEXIST) {
        Refuse(name, std::generic_category().message(errno));
    }
    return file.IsOpen();
}

/// The file that a name leads to, through whatever links.
fs::path RegularFile(const std::string& name)
{
    std::error_code error;
    fs::path path = fs::canonical(name, error);
    if (error) {
        Refuse(name, error.message());
    }
    if (!fs::is_regular_file(path)) {
        Refuse(name, "it is not a regular file");
    }
    return path;
}

} // namespace

void WriteOutputFile(const std::string& name, std::string_view content)
{
    const bool isNew = Create(name);
    const fs::path path = RegularFile(name);
    if (const platform::Result<void> result = platform::ReplaceFile(path, content); !result) {
        if (isNew) {
            unlink(path.c_str());
        }
        Refuse(name, std::generic_category().message(result.Error().code));
    }
}
