#include "Platform/desktop/app/ProgramFolder.h"

#include <filesystem>
#include <system_error>

namespace desktop {

const std::string& ProgramFolder()
{
    static const std::string folder = [] {
        std::error_code error;
        return std::filesystem::read_symlink("/proc/self/exe", error).parent_path().string();
    }();
    return folder;
}

} // namespace desktop
