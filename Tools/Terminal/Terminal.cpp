#include "Tools/Terminal/Terminal.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <langinfo.h>
#include <locale.h>
#include <string>
#include <sys/ioctl.h>
#include <unistd.h>

#include "Diagnostics/Text/TerminalText.h"
#include "Tools/CommandError.h"

namespace {

ColourMode colourMode = ColourMode::kAuto;

bool IsAbleTerminal(int descriptor)
{
    const char* terminal = std::getenv("TERM");
    return isatty(descriptor) == 1 && terminal != nullptr && std::strcmp(terminal, "dumb") != 0;
}

} // namespace

void SetColour(ColourMode mode)
{
    colourMode = mode;
}

bool CanRedraw()
{
    return IsAbleTerminal(STDOUT_FILENO);
}

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

bool WantsColour(int descriptor)
{
    if (colourMode != ColourMode::kAuto) {
        return colourMode == ColourMode::kAlways;
    }
    const char* noColour = std::getenv("NO_COLOR");
    return (noColour == nullptr || *noColour == '\0') && IsAbleTerminal(descriptor);
}

std::size_t OutputColumns()
{
    constexpr std::size_t kUsual = 80;
    winsize size = {};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kUsual;
}

bool ShowsUnicode()
{
    // Not `setlocale`, which would change the locale of the whole process.
    const locale_t locale = newlocale(LC_CTYPE_MASK, "", nullptr);
    if (locale == nullptr) {
        return false;
    }
    const bool utf8 = std::strcmp(nl_langinfo_l(CODESET, locale), "UTF-8") == 0;
    freelocale(locale);
    return utf8;
}
