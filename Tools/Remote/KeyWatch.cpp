#include "Tools/Remote/KeyWatch.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

#include <X11/extensions/XInput2.h>
#include <X11/XKBlib.h>
#include <X11/Xlib.h>

#include "Diagnostics/Status/DisplayConnection.h"
#include "Diagnostics/Text/Json.h"
#include "Diagnostics/Text/Table.h"
#include "Platform/desktop/x11/Instance.h"
#include "Platform/desktop/x11/KeySymbols.h"
#include "Platform/desktop/x11/KeyTable.h"
#include "RemoteControl/Keys/KeyUse.h"
#include "Tools/CommandError.h"
#include "Tools/Remote/AnswerLimit.h"
#include "Tools/Terminal/Terminal.h"
#include "Tools/Watch/MainLoop.h"

namespace {

constexpr std::chrono::seconds kAnswerLimit{5};
constexpr std::chrono::seconds kPingInterval{2};

std::string DisplayNameOfUser()
{
    const char* const name = std::getenv("DISPLAY");
    return name == nullptr ? "" : name;
}

/// Xlib ends the process when this handler returns; this end says why.
int OnServerGone(Display* /*display*/)
{
    PrintError("display '" + DisplayNameOfUser() + "' is gone");
    _exit(static_cast<int>(ExitCode::kCouldNotRun));
}

/// "held", "handed-back" or "neither".
const char* StateOf(KeyUse use)
{
    if (use == KeyUse::kHeld) {
        return "held";
    }
    return use == KeyUse::kHandedBack ? "handed-back" : "neither";
}

/// Why the state is "neither"; null for no particular reason.
const char* ReasonOf(KeyUse use)
{
    if (use == KeyUse::kNotRunning) {
        return "not-running";
    }
    return use == KeyUse::kTaken ? "taken" : nullptr;
}

std::string Describe(KeyUse use)
{
    switch (use) {
    case KeyUse::kHeld:
        return "held";
    case KeyUse::kHandedBack:
        return "handed back";
    case KeyUse::kTaken:
        return "neither: another program has taken it";
    case KeyUse::kNotRunning:
        return "neither: the application does not run";
    case KeyUse::kNeither:
        break;
    }
    return "neither";
}

std::optional<int> KeyIdOf(const std::string& key)
{
    for (int keyId = 0; keyId < desktop::kKeyIds; ++keyId) {
        if (key == desktop::KeyName(keyId)) {
            return keyId;
        }
    }
    return std::nullopt;
}

struct KeyEvent {
    bool isPress;
    int code;
};

class Watch {
public:
    explicit Watch(const WatchKeysOptions& options) : options_(options) {}

    ExitCode Run();

private:
    void Connect();
    void Introduce();
    void Select();
    void ReadEvents();
    std::optional<KeyEvent> NextKeyEvent();
    void Report(const KeyEvent& event);
    void Ping();
    std::string NameOf(int code) const;
    std::string Line(const KeyEvent& event, const std::string& key, KeyUse use) const;

    WatchKeysOptions options_;
    DisplayConnection display_;
    int extension_ = 0; ///< the major opcode of the events
    MainLoop loop_;
    LoopTimer ping_{loop_, [this] { Ping(); }};
};

ExitCode Watch::Run()
{
    XSetIOErrorHandler(OnServerGone);
    {
        const AnswerLimit limit(DisplayNameOfUser(), kAnswerLimit);
        Connect();
        Select();
        Introduce();
    }
    loop_.EndWithReader();
    loop_.OnReadable(ConnectionNumber(display_.get()), [this] { ReadEvents(); });
    ping_.StartAt(MainLoop::Clock::now());
    loop_.Run();
    // Not closed: that would wait for a server that is stopped. The connection ends with the process.
    static_cast<void>(display_.release());
    return ExitCode::kOk;
}

void Watch::Connect()
{
    desktop::AddToolKeySymbols();
    display_ = OpenDisplay();
    int event = 0;
    int error = 0;
    // From 2.1 on, raw events come whoever holds a key.
    int major = 2;
    int minor = 1;
    if (XQueryExtension(display_.get(), "XInputExtension", &extension_, &event, &error) == False ||
        XIQueryVersion(display_.get(), &major, &minor) != Success || (major == 2 && minor < 1)) {
        throw CommandError(ExitCode::kCouldNotRun, std::string("display '") + DisplayString(display_.get()) +
                                                       "' has no XInput 2.1, which reports keys");
    }
}

void Watch::Select()
{
    std::vector<unsigned char> bits(XIMaskLen(XI_LASTEVENT), 0);
    XISetMask(bits.data(), XI_RawKeyPress);
    XISetMask(bits.data(), XI_RawKeyRelease);
    XIEventMask mask = {XIAllMasterDevices, static_cast<int>(bits.size()), bits.data()};
    XISelectEvents(display_.get(), DefaultRootWindow(display_.get()), &mask, 1);
    XSync(display_.get(), False);
}

void Watch::Introduce()
{
    const auto instance = desktop::ReadInstance(display_.get());
    PrintError(std::string("watching the keys of display '") + DisplayString(display_.get()) + "'; " +
               desktop::kApplicationId +
               (instance ? " (pid " + std::to_string(instance->pid) + ") runs" : " does not run") +
               "; Ctrl-C ends this");
}

/// Notices a stopped server even while no key is pressed.
void Watch::Ping()
{
    {
        const AnswerLimit limit(DisplayNameOfUser(), kAnswerLimit);
        XSync(display_.get(), False);
    }
    // Xlib may have read events along with the answer; the connection is not readable then.
    ReadEvents();
    ping_.StartAt(MainLoop::Clock::now() + kPingInterval);
}

void Watch::ReadEvents()
{
    while (XPending(display_.get()) > 0) {
        if (const std::optional<KeyEvent> event = NextKeyEvent()) {
            Report(*event);
        }
    }
}

std::optional<KeyEvent> Watch::NextKeyEvent()
{
    XEvent event;
    XNextEvent(display_.get(), &event);
    if (event.type == MappingNotify) {
        const AnswerLimit limit(DisplayNameOfUser(), kAnswerLimit);
        XRefreshKeyboardMapping(&event.xmapping);
        return std::nullopt;
    }
    XGenericEventCookie& cookie = event.xcookie;
    if (event.type != GenericEvent || cookie.extension != extension_ ||
        XGetEventData(display_.get(), &cookie) == False) {
        return std::nullopt;
    }
    const KeyEvent key = {cookie.evtype == XI_RawKeyPress, static_cast<const XIRawEvent*>(cookie.data)->detail};
    XFreeEventData(display_.get(), &cookie);
    return key;
}

/// The name of what the key gives without a modifier; empty when it gives nothing.
std::string Watch::NameOf(int code) const
{
    const KeySym symbol = XkbKeycodeToKeysym(display_.get(), static_cast<KeyCode>(code), 0, 0);
    const char* const name = symbol == NoSymbol ? nullptr : XKeysymToString(symbol);
    return name == nullptr ? "" : name;
}

void Watch::Report(const KeyEvent& event)
{
    std::string key;
    KeyUse use = KeyUse::kNeither;
    {
        const AnswerLimit limit(DisplayNameOfUser(), kAnswerLimit);
        key = NameOf(event.code);
        use = UseOfKey(desktop::ReadInstance(display_.get()), key);
    }
    if (!Print(Line(event, key, use))) {
        loop_.End();
    }
}

std::string Watch::Line(const KeyEvent& event, const std::string& key, KeyUse use) const
{
    const std::optional<int> keyId = KeyIdOf(key);
    if (options_.json) {
        return RenderJsonLine({{"event", event.isPress ? "press" : "release"},
                               {"keysym", TextOrNull(key)},
                               {"key_code", event.code},
                               {"key_id", keyId ? Json(*keyId) : Json()},
                               {"application", StateOf(use)},
                               {"reason", ReasonOf(use) == nullptr ? Json() : Json(ReasonOf(use))}});
    }
    Table table({});
    const auto padded = [](std::string text, std::size_t width) {
        return text + std::string(width - std::min(width, text.size()), ' ');
    };
    table.Add({padded(event.isPress ? "press" : "release", 7), padded(key.empty() ? "no keysym" : key, 20),
               padded("key code " + std::to_string(event.code), 12),
               padded(keyId ? "id " + std::to_string(*keyId) : "no id", 6), Describe(use)});
    return table.Text();
}

} // namespace

ExitCode WatchKeys(const WatchKeysOptions& options)
{
    return Watch(options).Run();
}
