#include "Tools/Remote/RemotePress.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <string>

#include <X11/Xlib.h>

#include "Diagnostics/Status/DisplayConnection.h"
#include "Diagnostics/Status/Processes.h"
#include "Diagnostics/Text/Words.h"
#include "Platform/desktop/x11/Instance.h"
#include "Platform/desktop/x11/KeySymbols.h"
#include "RemoteControl/Keys/EndingSignals.h"
#include "RemoteControl/Keys/Keyboard.h"
#include "RemoteControl/Keys/LentKey.h"
#include "Tools/CommandError.h"
#include "Tools/Remote/EventsRead.h"
#include "Tools/Remote/KeyNames.h"
#include "Tools/Terminal/Terminal.h"

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kPollInterval{10};
/// Longer than a loaded machine takes. A stopped process is recognised without waiting.
constexpr milliseconds kReadLimit{10000};

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

bool IsStopped(pid_t pid)
{
    const auto processes = status::FindApplicationProcesses().processes;
    return std::any_of(processes.begin(), processes.end(),
                       [pid](const auto& process) { return process.pid == pid && process.stopped; });
}

/// Who got the key, as far as it is known.
struct Delivery {
    std::optional<desktop::InstanceFacts> holder; ///< of other readers than the application nothing is known
    bool stopped = false;                         ///< the holder
    bool read = false;                            ///< no event of the key is left to read
};

Delivery FindDelivery(Display* display, const std::string& key, bool anyway)
{
    Delivery delivery;
    const auto instance = desktop::ReadInstance(display);
    if (!instance || !Contains(instance->heldKeys, key)) {
        delivery.read = !instance && !anyway; // the application has ended meanwhile
        return delivery;
    }
    delivery.holder = instance;
    delivery.stopped = IsStopped(instance->pid);
    delivery.read = !delivery.stopped && HasReadItsEvents(display, *instance, kReadLimit);
    return delivery;
}

std::string DeliveryText(const Delivery& delivery)
{
    if (!delivery.holder) {
        return "";
    }
    std::string holds = ", which " + NameOf(*delivery.holder) + " holds";
    if (delivery.read) {
        return holds;
    }
    const std::string pid = std::to_string(delivery.holder->pid);
    return holds + " but has not read: " +
           (delivery.stopped ? "it is stopped, and reads the key once 'kill -CONT " + pid + "' lets it go on"
                             : "it does not answer; 'vqmctl status' examines it");
}

/// Presses the key and says what is known of its way.
Delivery Press(Display* display, const std::string& key, const PressOptions& options, LentKey& lent, Keyboard& keyboard,
               EndingSignals& signals)
{
    if (!options.anyway) {
        try {
            RequireHeld(display, key, milliseconds(options.waitMilliseconds), signals);
        } catch (const CommandError&) {
            lent.GiveBack(); // nothing was pressed, so there is no reader to wait for
            throw;
        }
    }
    const int times = keyboard.Press(lent.Code(), options.times, milliseconds(options.holdMilliseconds), signals);
    Delivery delivery = FindDelivery(display, key, options.anyway);
    PrintError(PressedText(key, times) + DeliveryText(delivery));
    return delivery;
}

} // namespace

ExitCode PressRemoteKey(const PressOptions& options)
{
    desktop::AddToolKeySymbols();
    const KeySym symbol = KeySymNamed(options.key);
    const std::string key = XKeysymToString(symbol);

    const DisplayConnection display = OpenDisplay();
    Keyboard keyboard(display.get());
    // However the program ends, no key stays down. One that stays lent is taken back by the next press.
    EndingSignals signals;
    LentKey lent(display.get(), keyboard, symbol);
    const Delivery delivery = Press(display.get(), key, options, lent, keyboard, signals);
    if (lent.IsLent()) {
        if (delivery.read) {
            lent.GiveBack();
        } else {
            PrintError(key + " is not on this keyboard; it stays on keycode " + std::to_string(lent.Code()) +
                       " until the next 'vqmctl remote press', for whoever has not read it yet");
        }
    }
    return delivery.holder && !delivery.read ? ExitCode::kFindings : ExitCode::kOk;
}
