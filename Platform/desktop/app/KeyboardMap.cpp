#include "Platform/desktop/app/KeyboardMap.h"

#include <algorithm>
#include <cstddef>
#include <set>

#include <X11/keysym.h>

namespace desktop {

KeyboardMap::KeyboardMap(Display* display)
{
    XDisplayKeycodes(display, &first_, &last_);
    symbols_.reset(XGetKeyboardMapping(display, static_cast<KeyCode>(first_), last_ - first_ + 1, &symbolsPerKeycode_));
}

KeySym KeyboardMap::SymbolOf(int keycode) const
{
    if (symbols_ == nullptr || symbolsPerKeycode_ == 0 || keycode < first_ || keycode > last_) {
        return NoSymbol;
    }
    const auto index = static_cast<std::size_t>(keycode - first_) * static_cast<std::size_t>(symbolsPerKeycode_);
    return symbols_.get()[index];
}

std::vector<unsigned int> LockModifierCombinations(Display* display, const KeyboardMap& keyboard)
{
    struct Free {
        void operator()(XModifierKeymap* map) const { XFreeModifiermap(map); }
    };
    const std::unique_ptr<XModifierKeymap, Free> map(XGetModifierMapping(display));
    const auto isLockKey = [&](KeyCode keycode) {
        const KeySym symbol = keyboard.SymbolOf(keycode);
        return symbol == XK_Num_Lock || symbol == XK_Scroll_Lock;
    };
    std::set<unsigned int> locks = {LockMask};
    for (int modifier = Mod1MapIndex; map != nullptr && modifier <= Mod5MapIndex; ++modifier) {
        const KeyCode* keycodes = map->modifiermap + static_cast<std::ptrdiff_t>(modifier) * map->max_keypermod;
        if (std::any_of(keycodes, keycodes + map->max_keypermod, isLockKey)) {
            locks.insert(1U << modifier);
        }
    }

    // Each lock doubles the combinations: those so far, without it and with it.
    std::vector<unsigned int> combinations = {0};
    for (const unsigned int lock : locks) {
        const std::size_t count = combinations.size();
        for (std::size_t i = 0; i < count; ++i) {
            combinations.push_back(combinations[i] | lock);
        }
    }
    return combinations;
}

} // namespace desktop
