#pragma once

#include <memory>
#include <vector>

#include <X11/Xlib.h>

namespace desktop {

/// The symbol of each keycode without a modifier, read from the X server: Xlib's own copy may be older
/// than the event that announces a change.
class KeyboardMap {
public:
    /// `display` is borrowed for the construction only.
    explicit KeyboardMap(Display* display);

    int FirstKeycode() const { return first_; }
    int LastKeycode() const { return last_; }
    /// NoSymbol for a keycode outside the keyboard's range.
    KeySym SymbolOf(int keycode) const;

private:
    struct Free {
        void operator()(KeySym* symbols) const { XFree(symbols); }
    };

    int first_ = 0;
    int last_ = 0;
    int symbolsPerKeycode_ = 0;
    std::unique_ptr<KeySym, Free> symbols_;
};

/// Every combination, including none, of the modifiers that Caps, Num and Scroll Lock set: with a lock on,
/// a key is still the plain key to its user.
std::vector<unsigned int> LockModifierCombinations(Display* display, const KeyboardMap& keyboard);

} // namespace desktop
