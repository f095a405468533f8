#include "Diagnostics/Status/DisplayAnswer.h"

#include <optional>

#include <X11/Xlib.h>

#include "Diagnostics/Status/DisplayConnection.h"
#include "Diagnostics/Status/DisplayPing.h"
#include "Platform/desktop/x11/Instance.h"
#include "Platform/desktop/x11/KeySymbols.h"
#include "Platform/desktop/x11/KeyTable.h"

namespace status {

namespace {

std::vector<std::string> ToolKeysOn(Display* display)
{
    std::vector<std::string> names;
    for (int keyId = 0; keyId < desktop::kKeyIds; ++keyId) {
        const char* name = desktop::KeyName(keyId);
        if (desktop::IsToolKey(keyId) && XKeysymToKeycode(display, XStringToKeysym(name)) != 0) {
            names.emplace_back(name);
        }
    }
    return names;
}

} // namespace

DisplayAnswer AskDisplay()
{
    DisplayAnswer answer;
    desktop::AddToolKeySymbols();
    const DisplayConnection display(XOpenDisplay(nullptr));
    answer.connected = display != nullptr;
    if (!answer.connected) {
        return answer;
    }
    answer.wayland = IsWaylandGuest(display.get());
    if (const std::optional<desktop::InstanceFacts> instance = desktop::ReadInstance(display.get())) {
        answer.pid = instance->pid;
        answer.heldKeys = instance->heldKeys;
        answer.failedKeys = instance->failedKeys;
        // A message to no window would reach whichever one is below the pointer.
        const Window keyWindow = instance->keyWindow.value_or(None);
        answer.answers = keyWindow == None || Answers(display.get(), keyWindow);
    }
    answer.toolKeys = ToolKeysOn(display.get());
    return answer;
}

} // namespace status
