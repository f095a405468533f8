#pragma once

#include <chrono>

#include <X11/Xlib.h>

#include "RemoteControl/Keys/EndingSignals.h"

/// Presses keys on an X display as a keyboard would, through XTest.
class Keyboard {
public:
    /// `display` is borrowed. Throws `std::runtime_error` when the server has no XTest extension.
    explicit Keyboard(Display* display);

    /// The keycode that gives `symbol` without any modifier; 0 when no key does.
    KeyCode Find(KeySym symbol) const;

    /// A keycode that gives nothing. Throws `std::runtime_error` when there is none.
    KeyCode FindSpare() const;

    /// Makes `code` give `symbol`. Every client is told to read the mapping again.
    void Put(KeyCode code, KeySym symbol);

    /// Takes `symbol` off `code` again; does nothing when the keycode gives something else by now.
    ///
    /// A client translates a keycode when it reads the event, which may be long after the release:
    /// a key that is taken off before that is lost.
    void TakeOff(KeyCode code, KeySym symbol);

    /// Presses and releases `code` `times` times, each time held down for `hold`, and returns how
    /// often it did. A signal that ends the program makes it stop after a release. Of several
    /// processes one at a time holds a key down; throws `std::runtime_error` when another does not let go.
    int Press(KeyCode code, int times, std::chrono::milliseconds hold, EndingSignals& signals);

private:
    Display* display_;
};
