#include "Tools/Remote/RemoteKeys.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <set>
#include <string>
#include <thread>

#include "Diagnostics/Status/DisplayConnection.h"
#include "Platform/desktop/x11/Instance.h"
#include "Platform/desktop/x11/KeySymbols.h"
#include "RemoteControl/Keys/Keyboard.h"
#include "RemoteControl/Keys/LentKey.h"
#include "Tools/CommandError.h"
#include "Tools/Terminal/Terminal.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds kPollInterval{10};
constexpr milliseconds kStartLimit{2000};

/// The instance, as soon as it has taken its keys.
std::optional<desktop::InstanceFacts> WaitForInstance(Display* display)
{
    const auto deadline = steady_clock::now() + kStartLimit;
    for (;;) {
        auto instance = desktop::ReadInstance(display);
        if (!instance || instance->keyWindow || steady_clock::now() >= deadline) {
            return instance;
        }
        std::this_thread::sleep_for(kPollInterval);
    }
}

/// The names without those of lent keys.
std::vector<std::string> KeyboardsOwn(Display* display, std::vector<std::string> names)
{
    desktop::AddToolKeySymbols();
    const std::set<KeyCode> lent = LentKeycodes(display);
    const Keyboard keyboard(display);
    const auto isLent = [&](const std::string& name) {
        return lent.count(keyboard.Find(XStringToKeysym(name.c_str()))) != 0;
    };
    names.erase(std::remove_if(names.begin(), names.end(), isLent), names.end());
    return names;
}

} // namespace

ExitCode ListHeldKeys(const HeldKeysOptions& options)
{
    const DisplayConnection display = OpenDisplay();
    std::optional<desktop::InstanceFacts> instance = WaitForInstance(display.get());
    if (!instance) {
        throw CommandError(ExitCode::kFindings, std::string(desktop::kApplicationId) + " does not run on display '" +
                                                    DisplayString(display.get()) + "'");
    }
    if (options.keyboardOnly) {
        instance->heldKeys = KeyboardsOwn(display.get(), std::move(instance->heldKeys));
        instance->failedKeys = KeyboardsOwn(display.get(), std::move(instance->failedKeys));
    }
    std::string lines;
    for (const std::string& key : instance->heldKeys) {
        lines += key + '\n';
    }
    const bool wanted = Print(lines);
    for (const std::string& key : instance->failedKeys) {
        PrintError(key + " is taken by another program");
    }
    if (lines.empty() && instance->failedKeys.empty()) {
        PrintError(std::string(desktop::kApplicationId) + " (pid " + std::to_string(instance->pid) +
                   ") holds no key: this keyboard has none that it wants");
    }
    // A reader that has gone is not an error, and wants no findings.
    return !wanted || instance->failedKeys.empty() ? ExitCode::kOk : ExitCode::kFindings;
}
