#include "Tools/Remote/RemotePress.h"

#include <chrono>
#include <optional>
#include <string>

#include <X11/Xlib.h>

#include "Diagnostics/Status/DisplayConnection.h"
#include "Diagnostics/Text/Words.h"
#include "Platform/desktop/x11/Instance.h"
#include "Platform/desktop/x11/KeySymbols.h"
#include "Tools/CommandError.h"
#include "Tools/Remote/EndingSignals.h"
#include "Tools/Remote/EventsRead.h"
#include "Tools/Remote/Keyboard.h"
#include "Tools/Remote/KeyNames.h"
#include "Tools/Remote/LentKey.h"
#include "Tools/Terminal/Terminal.h"

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kPollInterval{10};
constexpr milliseconds kReadLimit{2000};

std::string NameOf(const desktop::InstanceFacts& instance)
{
    return std::string(desktop::kApplicationId) + " (pid " + std::to_string(instance.pid) + ")";
}

/// Waits until the application says that it holds the key: it may be starting, and after a change
/// of the keyboard mapping it takes its keys anew. Gives what it said last.
std::optional<desktop::InstanceFacts> WaitUntilHeld(Display* display, const std::string& key, milliseconds limit,
                                                    EndingSignals& signals)
{
    const auto deadline = std::chrono::steady_clock::now() + limit;
    for (;;) {
        auto instance = desktop::ReadInstance(display);
        if ((instance && Contains(instance->heldKeys, key)) || std::chrono::steady_clock::now() >= deadline ||
            !signals.Wait(kPollInterval)) {
            return instance;
        }
    }
}

/// Throws unless the application holds the key.
void RequireHeld(Display* display, const std::string& key, milliseconds limit, EndingSignals& signals)
{
    const std::optional<desktop::InstanceFacts> instance = WaitUntilHeld(display, key, limit, signals);
    if (!instance) {
        throw CommandError(ExitCode::kFindings, "the application does not hold " + key + ": " +
                                                    desktop::kApplicationId + " does not run on display '" +
                                                    DisplayString(display) + "'");
    }
    if (Contains(instance->failedKeys, key)) {
        throw CommandError(ExitCode::kFindings,
                           NameOf(*instance) + " does not hold " + key + ": another program has taken it");
    }
    if (!Contains(instance->heldKeys, key)) {
        throw CommandError(ExitCode::kFindings, "the application does not hold " + key + ": " + NameOf(*instance) +
                                                    " leaves it to other programs; --anyway sends it to them");
    }
}

std::string PressedText(const std::string& key, int times)
{
    return "pressed and released " + key + (times == 1 ? "" : " " + std::to_string(times) + " times");
}

/// Whether no event of the key is left to read. Of other readers than the application nothing is known.
bool IsRead(Display* display, const std::string& key, const PressOptions& options)
{
    const auto instance = desktop::ReadInstance(display);
    if (!instance) {
        return !options.anyway;
    }
    return Contains(instance->heldKeys, key) && HasReadItsEvents(display, *instance, kReadLimit);
}

/// Presses the key and says so.
void Press(Display* display, const std::string& key, const PressOptions& options, LentKey& lent, Keyboard& keyboard,
           EndingSignals& signals)
{
    if (!options.anyway) {
        try {
            RequireHeld(display, key, milliseconds(options.waitMilliseconds), signals);
        } catch (const CommandError&) {
            lent.GiveBack();
            throw;
        }
    }
    const int times = keyboard.Press(lent.Code(), options.times, milliseconds(options.holdMilliseconds), signals);
    const auto instance = desktop::ReadInstance(display);
    PrintError(PressedText(key, times) +
               (instance && Contains(instance->heldKeys, key) ? ", which " + NameOf(*instance) + " holds" : ""));
}

} // namespace

ExitCode PressRemoteKey(const PressOptions& options)
{
    desktop::AddToolKeySymbols();
    const KeySym symbol = KeySymNamed(options.key);
    const std::string key = XKeysymToString(symbol);

    const DisplayConnection display = OpenDisplay();
    Keyboard keyboard(display.get());
    // Whatever ends the program, a key is not left down, nor lent to the keyboard.
    EndingSignals signals;
    LentKey lent(display.get(), keyboard, symbol);
    Press(display.get(), key, options, lent, keyboard, signals);
    if (lent.IsLent()) {
        if (IsRead(display.get(), key, options)) {
            lent.GiveBack();
        } else {
            PrintError(key + " is not on this keyboard; it stays on keycode " + std::to_string(lent.Code()) +
                       " until the next 'vqmctl remote press', for whoever has not read it yet");
        }
    }
    return ExitCode::kOk;
}
