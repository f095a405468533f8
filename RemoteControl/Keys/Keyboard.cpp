#include "RemoteControl/Keys/Keyboard.h"

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string>

#include <X11/extensions/XTest.h>
#include <X11/keysym.h>

#include "RemoteControl/Keys/SelectionLock.h"

namespace {

constexpr char kKeyDownLock[] = "_TV_REMOTE_KEY_DOWN";
/// A little longer than a key can be asked to be held.
constexpr std::chrono::milliseconds kLongestHold{65000};

/// The server's keyboard mapping: a row of symbols for each keycode.
class Mapping {
public:
    explicit Mapping(Display* display)
    {
        XDisplayKeycodes(display, &first_, &last_);
        symbols_.reset(XGetKeyboardMapping(display, static_cast<KeyCode>(first_), last_ - first_ + 1, &width_));
    }

    int First() const { return first_; }
    int Last() const { return last_; }

    KeySym Plain(int code) const { return Row(code)[0]; }

    bool IsSpare(int code) const
    {
        return std::all_of(Row(code), Row(code) + width_, [](KeySym symbol) { return symbol == NoSymbol; });
    }

private:
    const KeySym* Row(int code) const { return symbols_.get() + static_cast<std::ptrdiff_t>(code - first_) * width_; }

    struct Free {
        void operator()(KeySym* symbols) const { XFree(symbols); }
    };

    int first_ = 0;
    int last_ = 0;
    int width_ = 0;
    std::unique_ptr<KeySym, Free> symbols_;
};

} // namespace

Keyboard::Keyboard(Display* display) : display_(display)
{
    int event = 0;
    int error = 0;
    int major = 0;
    int minor = 0;
    if (XTestQueryExtension(display_, &event, &error, &major, &minor) == False) {
        throw std::runtime_error(std::string("display '") + DisplayString(display_) +
                                 "' has no XTest extension, which presses keys");
    }
}

KeyCode Keyboard::Find(KeySym symbol) const
{
    const Mapping mapping(display_);
    for (int code = mapping.First(); code <= mapping.Last(); ++code) {
        if (mapping.Plain(code) == symbol) {
            return static_cast<KeyCode>(code);
        }
    }
    return 0;
}

KeyCode Keyboard::FindSpare() const
{
    const Mapping mapping(display_);
    // From the end: the spare codes there are the ones least likely to have a key behind them.
    for (int code = mapping.Last(); code >= mapping.First(); --code) {
        if (mapping.IsSpare(code)) {
            return static_cast<KeyCode>(code);
        }
    }
    throw std::runtime_error(std::string("the keyboard of display '") + DisplayString(display_) +
                             "' has no spare keycode left");
}

void Keyboard::Put(KeyCode code, KeySym symbol)
{
    XChangeKeyboardMapping(display_, code, 1, &symbol, 1);
    XSync(display_, False);
}

void Keyboard::TakeOff(KeyCode code, KeySym symbol)
{
    if (Mapping(display_).Plain(code) == symbol) {
        Put(code, NoSymbol);
    }
}

int Keyboard::Press(KeyCode code, int times, std::chrono::milliseconds hold, EndingSignals& signals)
{
    using std::chrono::milliseconds;
    // A release and a press of the same millisecond are an automatic repeat to many programs.
    const milliseconds pause = std::clamp(hold, milliseconds(2), milliseconds(50));

    int count = 0;
    for (bool goOn = true; goOn && count < times; goOn = goOn && count < times && signals.Wait(pause)) {
        // Of two keys that are down at once the server may give the release of the second to another
        // program: a grab that a key has begun ends with that key.
        const SelectionLock alone(display_, kKeyDownLock, kLongestHold, &signals);
        XTestFakeKeyEvent(display_, code, True, CurrentTime);
        XSync(display_, False);
        goOn = signals.Wait(hold);
        XTestFakeKeyEvent(display_, code, False, CurrentTime);
        XSync(display_, False);
        ++count;
    }
    return count;
}
