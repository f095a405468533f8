#include "Tools/Terminal.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

#include <glib.h>

#include "Tools/Failure.h"

namespace {

bool WantsColour(int descriptor)
{
    const char* noColour = std::getenv("NO_COLOR");
    const char* terminal = std::getenv("TERM");
    return (noColour == nullptr || *noColour == '\0') && isatty(descriptor) == 1 && terminal != nullptr &&
           std::strcmp(terminal, "dumb") != 0;
}

void AppendEscapedByte(std::string& out, char byte)
{
    static constexpr char kDigits[] = "0123456789abcdef";
    const auto value = static_cast<unsigned char>(byte);
    out += "\\x";
    out += kDigits[value >> 4U];
    out += kDigits[value & 0xFU];
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
    throw Failure(ExitCode::kCouldNotRun, std::string("cannot write to stdout: ") + std::strerror(errno));
}

void Complain(std::string_view text)
{
    const bool colour = WantsColour(STDERR_FILENO);
    std::string line = colour ? "\033[1;31mvqmctl:\033[0m " : "vqmctl: ";
    line += EscapedForTerminal(text);
    line += '\n';
    std::fwrite(line.data(), 1, line.size(), stderr);
}

std::string EscapedForTerminal(std::string_view text)
{
    std::string out;
    while (!text.empty()) {
        const gunichar character = g_utf8_get_char_validated(text.data(), static_cast<gssize>(text.size()));
        // The last two values of the type say "broken" and "cut short".
        const bool broken = character >= static_cast<gunichar>(-2);
        const std::size_t length =
            broken || character == 0 ? 1 : static_cast<std::size_t>(g_unichar_to_utf8(character, nullptr));
        if (!broken && g_unichar_isprint(character) != FALSE) {
            out.append(text.substr(0, length));
        } else {
            for (const char byte : text.substr(0, length)) {
                AppendEscapedByte(out, byte);
            }
        }
        text.remove_prefix(length);
    }
    return out;
}

std::size_t WidthOnTerminal(const std::string& text)
{
    std::size_t width = 0;
    for (const char* next = text.c_str(); *next != '\0'; next = g_utf8_next_char(next)) {
        const gunichar character = g_utf8_get_char(next);
        if (g_unichar_iszerowidth(character) == FALSE) {
            width += g_unichar_iswide(character) != FALSE ? 2 : 1;
        }
    }
    return width;
}
