#pragma once

#include <chrono>

#include <X11/Xlib.h>

/// Presses keys on an X display as a keyboard would, through XTest.
class Keyboard {
public:
    /// `display` is borrowed. Throws `CommandError` when the server has no XTest extension.
    explicit Keyboard(Display* display);

    /// The keycode that gives `symbol` without any modifier; 0 when no key does.
    KeyCode Find(KeySym symbol) const;

    /// Puts `symbol` on a keycode that has none, and returns it. Every client is told to read the
    /// mapping again.
    ///
    /// The mapping stays: a client translates a keycode when it reads the event, which may be long
    /// after the release, and a key taken away before that would be lost. Throws `CommandError` when no
    /// keycode is free.
    KeyCode PutOnSpareKeycode(KeySym symbol);

    /// Presses and releases `code` `times` times, each time held down for `hold`. A signal that ends
    /// the program does so only after the key has been released.
    void Press(KeyCode code, int times, std::chrono::milliseconds hold);

private:
    Display* display_;
};
