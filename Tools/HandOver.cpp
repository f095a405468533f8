#include "Tools/HandOver.h"

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <unistd.h>

#include "Tools/CommandError.h"

void HandOver(char** argv)
{
    // Found from where this program lies, so that both can be moved together.
    const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe");
    const std::filesystem::path program = (self.parent_path() / VQM_LIBEXEC / "vqmctl-desktop").lexically_normal();
    execv(program.c_str(), argv);
    throw CommandError(ExitCode::kCouldNotRun,
                       "cannot run '" + program.string() + "': " + std::generic_category().message(errno));
}
