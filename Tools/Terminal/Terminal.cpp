#include "Tools/Terminal/Terminal.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unistd.h>

#include "Diagnostics/Text/TerminalText.h"
#include "Tools/CommandError.h"

namespace {

bool WantsColour(int descriptor)
{
    const char* noColour = std::getenv("NO_COLOR");
    const char* terminal = std::getenv("TERM");
    return (noColour == nullptr || *noColour == '\0') && isatty(descriptor) == 1 && terminal != nullptr &&
           std::strcmp(terminal, "dumb") != 0;
}

} // namespace

bool Print(std::string_view data)
{
    if (std::fwrite(data.data(), 1, data.size(), stdout) == data.size() && std::fflush(stdout) == 0) {
        return true;
    }
    if (errno == EPIPE) {
        return false;
    }
    const std::string reason = errno == EBADF ? "it is not open for writing" : std::strerror(errno);
    throw CommandError(ExitCode::kCouldNotRun, "cannot write to stdout: " + reason);
}

void PrintError(std::string_view text)
{
    const bool colour = WantsColour(STDERR_FILENO);
    std::string line = colour ? "\033[1;31mvqmctl:\033[0m " : "vqmctl: ";
    line += EscapedForTerminal(text);
    line += '\n';
    std::fwrite(line.data(), 1, line.size(), stderr);
}

void PrintNote(std::string_view note)
{
    if (!note.empty()) {
        PrintError(note);
    }
}
