#include "Platform/desktop/x11/KeySymbols.h"

#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>

#include <X11/Xlib.h>

#include "Platform/common/FileDescriptor.h"

namespace desktop {

namespace {

constexpr char kVariable[] = "XKEYSYMDB";
// Two unused numbers among the vendor symbols.
constexpr std::string_view kDatabase = "XF86SimpleMenu :1008FFF1\n"
                                       "XF86More :1008FFF2\n";

std::optional<std::string> Environment(const char* name)
{
    const char* value = std::getenv(name);
    return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

} // namespace

bool AddToolKeySymbols()
{
    // Xlib reads the database once, at the first name that it does not know. A file in memory needs no
    // place on disk and disappears by itself, and the variable is restored below.
    const platform::FileDescriptor file(memfd_create("keysyms", MFD_CLOEXEC));
    const auto size = static_cast<ssize_t>(kDatabase.size());
    if (!file.IsOpen() || write(file.Get(), kDatabase.data(), kDatabase.size()) != size) {
        return false;
    }
    const std::optional<std::string> before = Environment(kVariable);
    setenv(kVariable, ("/proc/self/fd/" + std::to_string(file.Get())).c_str(), 1);
    const bool known = XStringToKeysym("XF86SimpleMenu") != NoSymbol && XStringToKeysym("XF86More") != NoSymbol;
    if (before) {
        setenv(kVariable, before->c_str(), 1);
    } else {
        unsetenv(kVariable);
    }
    return known;
}

} // namespace desktop
