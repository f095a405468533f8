#include "Platform/desktop/app/KeyWindow.h"

#include <Ecore_Evas.h>
#include <Ecore_Input.h>
#include <Ecore_X.h>
#include <Elementary.h>

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

void ForgetTarget(void* /*data*/, Evas* /*canvas*/, Evas_Object* /*object*/, void* /*info*/)
{
    ecore_event_filter_del(TheTarget().filter);
    TheTarget() = Target();
}

/// The focus on the canvas is our doing; a real change of focus on the display takes it away again.
void FocusOnCanvas(const Target& target)
{
    if (!evas_focus_state_get(target.canvas)) {
        evas_focus_in(target.canvas);
    }
    if (evas_focus_get(target.canvas) != target.object) {
        evas_object_focus_set(target.object, EINA_TRUE);
    }
}

Eina_Bool RedirectKey(void* /*data*/, void* /*loopData*/, int type, void* event)
{
    if (type == ECORE_EVENT_KEY_DOWN || type == ECORE_EVENT_KEY_UP) {
        auto* key = static_cast<Ecore_Event_Key*>(event);
        const Target& target = TheTarget();
        if (key->event_window == key->root_window) {
            FocusOnCanvas(target);
            key->window = target.window;
            key->event_window = target.window;
        }
    }
    return EINA_TRUE;
}

void KeepOutOfTheWay(Ecore_X_Window window)
{
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
        evas_object_event_callback_del(target.object, EVAS_CALLBACK_DEL, ForgetTarget);
        ForgetTarget(nullptr, nullptr, nullptr, nullptr);
    }
    target.window = window;
    target.canvas = canvas;
    target.object = object;
    target.filter = ecore_event_filter_add(nullptr, RedirectKey, nullptr, nullptr);
    evas_object_event_callback_add(object, EVAS_CALLBACK_DEL, ForgetTarget, nullptr);
    KeepOutOfTheWay(static_cast<Ecore_X_Window>(window));
    return true;
}

Window KeyWindow()
{
    return TheTarget().window;
}

} // namespace desktop
