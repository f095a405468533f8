#include <csignal>

#include "Platform/desktop/base/StandardDescriptors.h"

namespace desktop {

namespace {

void PrepareProcess()
{
    OpenStandardDescriptors();
    // A file at its size limit refuses a write: the log loses a line, and the program goes on.
    std::signal(SIGXFSZ, SIG_IGN);
}

/// A constructor would run after those of the libraries, which may open files.
[[gnu::section(".preinit_array"), gnu::used]] void (*const atStart)() = PrepareProcess;

} // namespace

} // namespace desktop
