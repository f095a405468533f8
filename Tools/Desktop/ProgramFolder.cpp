#include "Platform/desktop/app/ProgramFolder.h"

#include <filesystem>
#include <system_error>

namespace desktop {

/// The application's folder instead of this program's own: the question is what the application would start.
const std::string& ProgramFolder()
{
    static const std::string folder = [] {
        std::error_code error;
        const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
        return (self.parent_path() / VQM_BIN).lexically_normal().string();
    }();
    return folder;
}

} // namespace desktop
