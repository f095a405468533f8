#include "Tools/Remote/RemotePress.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <string>
#include <thread>

#include <X11/Xlib.h>

#include "Diagnostics/Status/DisplayConnection.h"
#include "Platform/desktop/x11/Instance.h"
#include "Platform/desktop/x11/KeySymbols.h"
#include "Tools/CommandError.h"
#include "Tools/Remote/Keyboard.h"
#include "Tools/Remote/KeyNames.h"

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kPollInterval{10};

bool Contains(const std::vector<std::string>& names, const std::string& name)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

/// Waits until the application says that it holds the key: it may be starting, and after a change
/// of the keyboard mapping it takes its keys anew. Gives what it said last.
std::optional<desktop::InstanceFacts> WaitUntilHeld(Display* display, const std::string& key, milliseconds limit)
{
    const auto deadline = std::chrono::steady_clock::now() + limit;
    for (;;) {
        auto instance = desktop::ReadInstance(display);
        if ((instance && Contains(instance->heldKeys, key)) || std::chrono::steady_clock::now() >= deadline) {
            return instance;
        }
        std::this_thread::sleep_for(kPollInterval);
    }
}

/// Throws unless the application holds the key.
void RequireHeld(Display* display, const std::string& key, milliseconds limit)
{
    const std::optional<desktop::InstanceFacts> instance = WaitUntilHeld(display, key, limit);
    if (!instance) {
        throw CommandError(ExitCode::kFindings, "nobody holds " + key + ": " + desktop::kApplicationId +
                                                    " does not run on display '" + DisplayString(display) + "'");
    }
    const std::string application =
        std::string(desktop::kApplicationId) + " (pid " + std::to_string(instance->pid) + ")";
    if (Contains(instance->failedKeys, key)) {
        throw CommandError(ExitCode::kFindings,
                           application + " does not hold " + key + ": another program has taken it");
    }
    if (!Contains(instance->heldKeys, key)) {
        throw CommandError(ExitCode::kFindings, "nobody holds " + key + ": " + application +
                                                    " leaves it to other programs; --anyway sends it to them");
    }
}

} // namespace

ExitCode PressRemoteKey(const PressOptions& options)
{
    desktop::AddToolKeySymbols();
    const KeySym symbol = KeySymNamed(options.key);
    const std::string key = XKeysymToString(symbol);

    const DisplayConnection display = OpenDisplay();
    Keyboard keyboard(display.get());
    KeyCode code = keyboard.Find(symbol);
    if (code == 0) {
        code = keyboard.PutOnSpareKeycode(symbol);
    }
    if (!options.anyway) {
        RequireHeld(display.get(), key, milliseconds(options.waitMilliseconds));
    }
    keyboard.Press(code, options.times, milliseconds(options.holdMilliseconds));
    return ExitCode::kOk;
}
