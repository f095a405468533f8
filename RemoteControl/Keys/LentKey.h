#pragma once

#include <set>
#include <vector>

#include <X11/Xlib.h>

#include "RemoteControl/Keys/Keyboard.h"

/// A key to press: one of the keyboard's own or, where that lacks it, one that is lent to it.
///
/// Several processes may press the same lent key. The root window's property _TV_LENT_KEYS
/// (CARDINAL/32) notes each use with three numbers: the keycode, its symbol, and a window of the
/// process that uses it. The server destroys the window when the process ends, however it ends, so
/// that the next process finds what was not given back.
class LentKey {
public:
    /// Finds the key, or lends it to the keyboard. Takes off what ended processes have left there.
    /// `display` and `keyboard` are borrowed. Throws `std::runtime_error` when the keyboard has no room.
    LentKey(Display* display, Keyboard& keyboard, KeySym symbol);

    LentKey(const LentKey&) = delete;
    LentKey& operator=(const LentKey&) = delete;

    KeyCode Code() const { return code_; }

    /// False for a key that the keyboard has itself.
    bool IsLent() const { return user_ != None; }

    /// Takes the key off the keyboard again unless another process uses it, and waits a moment for
    /// the application to notice. Call it only when no client has events of the key left to read.
    /// A key that is not given back is taken off by the next process that looks for one to press.
    /// Throws `std::runtime_error` when another process is busy with the keyboard for too long.
    void GiveBack();

private:
    struct Use;

    static std::vector<Use> ReadUses(Display* display);
    void WriteUses(const std::vector<Use>& uses);
    std::vector<Use> TakeOffWhatIsLeft(const std::vector<Use>& uses);
    void TakeOff(const Use& use);
    bool IsAlive(Window user) const;

    friend std::set<KeyCode> LentKeycodes(Display* display);

    Display* display_;
    Keyboard& keyboard_;
    KeySym symbol_;
    KeyCode code_ = 0;
    Window user_ = None;
};

/// The keycodes whose keys are lent.
std::set<KeyCode> LentKeycodes(Display* display);
