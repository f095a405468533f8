#include "Platform/desktop/app/KeyWindow.h"

#include <array>
#include <map>
#include <set>
#include <string>
#include <utility>

#include <Ecore_Evas.h>
#include <Ecore_Input.h>
#include <Ecore_X.h>
#include <Elementary.h>
#include <X11/extensions/XInput2.h>

#include "Platform/desktop/base/PlatformLog.h"

namespace desktop {

namespace {

struct Target {
    Window window = None;
    Evas* canvas = nullptr;
    Evas_Object* object = nullptr;
    Ecore_Event_Filter* filter = nullptr;
};

Target& TheTarget()
{
    static Target target;
    return target;
}

/// A key's meaning when it went down. Its release is reported under the same name, even if the keyboard
/// map changes in between.
struct PressedKey {
    std::string name;
    std::string symbol;
};

/// The keys whose presses arrived and whose releases have not.
std::map<unsigned int, PressedKey>& PressedKeys()
{
    static std::map<unsigned int, PressedKey> keys;
    return keys;
}

/// The windows that keys are grabbed on. An event names the root window of the pointer's screen, which
/// may differ from the one with the grab.
std::set<Window>& Roots()
{
    static std::set<Window> roots;
    return roots;
}

/// The X server's number for the input extension; 0 without it.
int inputExtension = 0;

Evas* CanvasOf(Window window)
{
    Evas* canvas = nullptr;
    Eina_List* all = ecore_evas_ecore_evas_list_get();
    void* data = nullptr;
    EINA_LIST_FREE(all, data)
    {
        const auto* candidate = static_cast<const Ecore_Evas*>(data);
        if (static_cast<Window>(ecore_evas_window_get(candidate)) == window) {
            canvas = ecore_evas_get(candidate);
        }
    }
    return canvas;
}

/// The window is itself an object on its canvas.
Evas_Object* WindowObjectOn(Evas* canvas, Window window)
{
    for (Evas_Object* object = evas_object_bottom_get(canvas); object != nullptr;
         object = evas_object_above_get(object)) {
        if (elm_object_widget_check(object) && elm_win_xwindow_get(object) == window) {
            return object;
        }
    }
    return nullptr;
}

void ForgetTarget()
{
    ecore_event_filter_del(TheTarget().filter);
    TheTarget() = Target();
}

void OnWindowDeleted(void* /*data*/, Evas* /*canvas*/, Evas_Object* /*object*/, void* /*info*/)
{
    ForgetTarget();
}

/// The canvas has the focus only because this function gives it: each real change of focus on the display
/// takes it away again.
void FocusOnCanvas(const Target& target)
{
    if (!evas_focus_state_get(target.canvas)) {
        evas_focus_in(target.canvas);
    }
    if (evas_focus_get(target.canvas) != target.object) {
        evas_object_focus_set(target.object, EINA_TRUE);
    }
}

void NotePress(const Ecore_Event_Key& key)
{
    // A key that is held repeats its press.
    PressedKeys().try_emplace(key.keycode, PressedKey{key.keyname, key.key});
}

/// False when the release was reported already, by the raw event: of two reports the first counts.
bool NoteRelease(const Ecore_Event_Key& key)
{
    return PressedKeys().erase(key.keycode) != 0;
}

void ReportRelease(const XIRawEvent& release)
{
    const auto pressed = PressedKeys().find(static_cast<unsigned int>(release.detail));
    if (pressed == PressedKeys().end()) {
        return;
    }
    const PressedKey key = std::move(pressed->second);
    PressedKeys().erase(pressed);
    const Target& target = TheTarget();
    FocusOnCanvas(target);
    evas_event_feed_key_up(target.canvas, key.name.c_str(), key.symbol.c_str(), nullptr, nullptr,
                           static_cast<unsigned int>(release.time), nullptr);
}

/// Any client may destroy any window. The toolkit would then delete the canvas, and with its last window
/// its connection and the grabs. Keys need only the canvas, and the window shows nothing, so the event
/// is withheld from the toolkit.
bool IsLossOfKeyWindow(const Ecore_X_Event_Window_Destroy& destroyed)
{
    if (destroyed.win != TheTarget().window) {
        return false;
    }
    PLATFORM_LOG(DLOG_WARN, "another program has closed the application's window: the keys go on without it");
    return true;
}

/// Returns whether the event goes on to its handlers.
Eina_Bool FilterEvent(void* /*data*/, void* /*loopData*/, int type, void* event)
{
    if (type == ECORE_EVENT_KEY_DOWN || type == ECORE_EVENT_KEY_UP) {
        auto* key = static_cast<Ecore_Event_Key*>(event);
        if (Roots().count(key->event_window) == 0) {
            return EINA_TRUE;
        }
        if (type == ECORE_EVENT_KEY_DOWN) {
            NotePress(*key);
        } else if (!NoteRelease(*key)) {
            return EINA_FALSE;
        }
        const Target& target = TheTarget();
        FocusOnCanvas(target);
        key->window = target.window;
        key->event_window = target.window;
    } else if (type == ECORE_X_EVENT_WINDOW_DESTROY) {
        return !IsLossOfKeyWindow(*static_cast<const Ecore_X_Event_Window_Destroy*>(event));
    } else if (type == ECORE_X_EVENT_GENERIC && inputExtension != 0) {
        const auto* generic = static_cast<const Ecore_X_Event_Generic*>(event);
        if (generic->extension == inputExtension && generic->evtype == XI_RawKeyRelease && generic->data != nullptr) {
            ReportRelease(*static_cast<const XIRawEvent*>(generic->data));
        }
    }
    return EINA_TRUE;
}

void KeepOutOfTheWay(Ecore_X_Window window)
{
    // A window manager gives no focus to a window that declines input.
    ecore_x_icccm_hints_set(window, EINA_FALSE, ECORE_X_WINDOW_STATE_HINT_NORMAL, 0, 0, 0, 0, EINA_FALSE);
    ecore_x_mwm_borderless_set(window, EINA_TRUE);
    Ecore_X_Window_State states[] = {ECORE_X_WINDOW_STATE_SKIP_TASKBAR, ECORE_X_WINDOW_STATE_SKIP_PAGER};
    ecore_x_netwm_window_state_set(window, states, 2);
    // Without a compositor a transparent window is a black one: an empty shape shows nothing.
    ecore_x_window_shape_rectangle_set(window, 0, 0, 0, 0);
    ecore_x_window_shape_input_rectangle_set(window, 0, 0, 0, 0);
}

} // namespace

bool DirectGrabbedKeysTo(Window window)
{
    Evas* canvas = CanvasOf(window);
    Evas_Object* object = canvas == nullptr ? nullptr : WindowObjectOn(canvas, window);
    if (object == nullptr) {
        return false;
    }
    Target& target = TheTarget();
    if (target.object == object) {
        return true;
    }
    if (target.object != nullptr) {
        evas_object_event_callback_del(target.object, EVAS_CALLBACK_DEL, OnWindowDeleted);
        ForgetTarget();
    }
    target.window = window;
    target.canvas = canvas;
    target.object = object;
    target.filter = ecore_event_filter_add(nullptr, FilterEvent, nullptr, nullptr);
    evas_object_event_callback_add(object, EVAS_CALLBACK_DEL, OnWindowDeleted, nullptr);
    KeepOutOfTheWay(static_cast<Ecore_X_Window>(window));
    return true;
}

Window KeyWindow()
{
    return TheTarget().window;
}

void ReceiveGrabbedKeys(Display* display)
{
    for (int screen = 0; screen < ScreenCount(display); ++screen) {
        Roots().insert(RootWindow(display, screen));
    }
    int opcode = 0;
    int firstEvent = 0;
    int firstError = 0;
    // Since 2.1 these events arrive during any client's grab. The toolkit asks for the same version.
    int major = 2;
    int minor = 2;
    if (XQueryExtension(display, "XInputExtension", &opcode, &firstEvent, &firstError) == False ||
        XIQueryVersion(display, &major, &minor) != Success) {
        return; // releases of keys that are pressed one at a time still arrive
    }
    std::array<unsigned char, XIMaskLen(XI_LASTEVENT)> bits = {};
    XISetMask(bits.data(), XI_RawKeyRelease);
    XIEventMask mask = {XIAllMasterDevices, static_cast<int>(bits.size()), bits.data()};
    // One selection is enough for all screens.
    XISelectEvents(display, DefaultRootWindow(display), &mask, 1);
    inputExtension = opcode;
}

} // namespace desktop
