#include "Platform/desktop/app/CommandLine.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace desktop {

namespace {

constexpr char kHelp[] =
    "Usage: " PLATFORM_APP_NAME " [--help | --version]\n"
    "\n"
    "Holds the remote control's keys on the X display that DISPLAY names until SIGTERM, SIGINT,\n"
    "SIGQUIT or SIGHUP. A second start on the same display leaves the keys to the first and exits\n"
    "with 0.\n"
    "'vqmctl status' says what the running application does. Other arguments go to the toolkit.\n"
    "\n"
    "Options:\n"
    "  --help     Print this help and exit\n"
    "  --version  Print the version and exit\n"
    "\n"
    "Environment:\n"
    "  DISPLAY         The X display\n"
    "  TV_REMOTE_KEYS  tool: take the two tool keys only\n"
    "  DLOG_LEVEL      What the log on stderr shows: debug, info, warn, error or silent; debug if unset\n";

constexpr char kVersion[] = PLATFORM_APP_NAME " " PLATFORM_APP_VERSION "\n";

[[noreturn]] void Answer(const char* text)
{
    const bool written = std::fputs(text, stdout) >= 0 && std::fflush(stdout) == 0;
    // Without exit handlers: other constructor functions may not have run yet.
    std::_Exit(written ? EXIT_SUCCESS : EXIT_FAILURE);
}

} // namespace

void AnswerCommandLine(int argc, char** argv)
{
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--help") == 0) {
            Answer(kHelp);
        }
        if (std::strcmp(argv[i], "--version") == 0) {
            Answer(kVersion);
        }
    }
}

} // namespace desktop
