#include <csignal>

#include "Platform/desktop/base/StandardDescriptors.h"

namespace desktop {

namespace {

void PrepareProcess()
{
    OpenStandardDescriptors();
    // A log file at its size limit then costs a line and not the program.
    std::signal(SIGXFSZ, SIG_IGN);
}

/// Not a constructor function: that would run after those of the libraries, which may open files.
[[gnu::section(".preinit_array"), gnu::used]] void (*const atStart)() = PrepareProcess;

} // namespace

} // namespace desktop
