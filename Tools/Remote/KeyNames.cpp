#include "Tools/Remote/KeyNames.h"

#include <array>
#include <string_view>
#include <vector>

#include <X11/Xlib.h>

#include "Diagnostics/Text/Suggestions.h"
#include "Diagnostics/Text/Words.h"
#include "Tools/CommandError.h"

namespace {

constexpr std::string_view kVendorPrefix = "XF86";

struct Range {
    KeySym first;
    KeySym last;
};

/// The numbers of the keysyms that keyboards and remote controls have.
constexpr std::array<Range, 4> kRanges = {{
    {0x20, 0xFF},             // Latin-1
    {0xFE00, 0xFFFF},         // function, cursor and modifier keys
    {0x1008FE00, 0x1008FFFF}, // multimedia keys, and the two tool keys
    {0x10081000, 0x100813FF}, // key codes of the Linux kernel
}};

std::vector<std::string> KnownNames()
{
    std::vector<std::string> names;
    for (const Range& range : kRanges) {
        for (KeySym symbol = range.first; symbol <= range.last; ++symbol) {
            if (const char* name = XKeysymToString(symbol)) {
                names.emplace_back(name);
            }
        }
    }
    return names;
}

bool StartsWithVendor(const std::string& name)
{
    return EditDistance(name.substr(0, kVendorPrefix.size()), kVendorPrefix) == 0;
}

/// The prefix is easily left out, so "SimpleMenu" means XF86SimpleMenu rather than a similar name.
std::vector<std::string> NamesMeantBy(const std::string& name)
{
    const std::vector<std::string> known = KnownNames();
    if (!StartsWithVendor(name)) {
        std::vector<std::string> names = Suggest(std::string(kVendorPrefix) + name, known);
        if (!names.empty() && EditDistance(names.front(), std::string(kVendorPrefix) + name) == 0) {
            return {names.front()};
        }
        names = Suggest(name, known);
        if (!names.empty()) {
            return names;
        }
        return Suggest(std::string(kVendorPrefix) + name, known);
    }
    return Suggest(name, known);
}

} // namespace

KeySym KeySymNamed(const std::string& name)
{
    // A number such as "0x12345" is taken for a keysym, whether there is such a key or not.
    const KeySym symbol = XStringToKeysym(name.c_str());
    if (symbol != NoSymbol && XKeysymToString(symbol) != nullptr) {
        return symbol;
    }
    const std::vector<std::string> meant = NamesMeantBy(name);
    throw CommandError(ExitCode::kUsage,
                       "unknown key " + QuotedShort(name) + "; " +
                           (meant.empty() ? "expected a keysym name such as XF86SimpleMenu, XF86More or Left"
                                          : "did you mean " + JoinWithOr(meant) + "?"));
}
