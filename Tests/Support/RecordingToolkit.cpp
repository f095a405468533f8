#include <libintl.h>

#include <Ecore_X.h>
#include <Elementary.h>

#include "Tests/Support/RecordingCall.h"
#include "VQMKeygrab/VQMKeyGrab.h"

using recording::application;
using recording::Call;
using recording::NameOf;

namespace {

/// Objects that are only compared and named.
int window;
int canvas;
int rectangle;
int display;

template <typename Object>
Object* Handle(int& object, bool missing)
{
    return missing ? nullptr : reinterpret_cast<Object*>(&object);
}

const char* NameOf(Evas_Object_Event_Cb callback)
{
    return callback == CVQMKeyGrab::OnKeyReleaseCB ? "OnKeyReleaseCB" : "?";
}

} // namespace

std::string recording::NameOf(const void* object)
{
    if (object == nullptr) {
        return "null";
    }
    return object == &window      ? "window"
           : object == &canvas    ? "canvas"
           : object == &rectangle ? "rectangle"
           : object == &display   ? "display"
                                  : "?";
}

double _elm_startup_time = 0;

double ecore_time_unix_get()
{
    Call("ecore_time_unix_get");
    return 1479686400.25;
}

int elm_init(int argc, char** argv)
{
    Call("elm_init", argc, argv[0]);
    return application().elmInitResult;
}

int elm_shutdown()
{
    Call("elm_shutdown");
    return 0;
}

void elm_cache_all_flush()
{
    Call("elm_cache_all_flush");
}

void elm_language_set(const char* lang)
{
    Call("elm_language_set", lang);
}

char* bindtextdomain(const char* domain, const char* directory) noexcept
{
    Call("bindtextdomain", domain, directory);
    return nullptr;
}

Evas_Object* elm_win_add(Evas_Object* parent, const char* name, Elm_Win_Type type)
{
    Call("elm_win_add", NameOf(parent), name, static_cast<int>(type));
    return Handle<Evas_Object>(window, application().noWindow);
}

void elm_win_title_set(Evas_Object* obj, const char* title)
{
    Call("elm_win_title_set", NameOf(obj), title);
}

Evas* evas_object_evas_get(const Evas_Object* obj)
{
    Call("evas_object_evas_get", NameOf(obj));
    return Handle<Evas>(canvas, application().noCanvas);
}

Evas_Object* evas_object_rectangle_add(Evas* e)
{
    Call("evas_object_rectangle_add", NameOf(e));
    return Handle<Evas_Object>(rectangle, application().noRectangle);
}

void evas_object_color_set(Evas_Object* obj, int r, int g, int b, int a)
{
    Call("evas_object_color_set", NameOf(obj), r, g, b, a);
}

void evas_object_render_op_set(Evas_Object* obj, Evas_Render_Op op)
{
    Call("evas_object_render_op_set", NameOf(obj), static_cast<int>(op));
}

void evas_object_resize(Evas_Object* obj, Evas_Coord w, Evas_Coord h)
{
    Call("evas_object_resize", NameOf(obj), w, h);
}

void evas_object_show(Evas_Object* obj)
{
    Call("evas_object_show", NameOf(obj));
}

void evas_object_hide(Evas_Object* obj)
{
    Call("evas_object_hide", NameOf(obj));
}

int evas_object_ref_get(const Evas_Object* obj)
{
    Call("evas_object_ref_get", NameOf(obj));
    return application().references;
}

void evas_object_unref(Evas_Object* obj)
{
    Call("evas_object_unref", NameOf(obj));
}

void evas_object_del(Evas_Object* obj)
{
    Call("evas_object_del", NameOf(obj));
}

Ecore_X_Display* ecore_x_display_get()
{
    Call("ecore_x_display_get");
    return Handle<Ecore_X_Display>(display, application().noDisplay);
}

Ecore_X_Window elm_win_xwindow_get(const Evas_Object* obj)
{
    Call("elm_win_xwindow_get", NameOf(obj));
    return 77;
}

void evas_object_event_callback_add(Evas_Object* obj, Evas_Callback_Type type, Evas_Object_Event_Cb func,
                                    const void* data)
{
    Call("evas_object_event_callback_add", NameOf(obj), static_cast<int>(type), NameOf(func));
    application().keyUpData = const_cast<void*>(data);
}

void* evas_object_event_callback_del(Evas_Object* obj, Evas_Callback_Type type, Evas_Object_Event_Cb func)
{
    Call("evas_object_event_callback_del", NameOf(obj), static_cast<int>(type), NameOf(func));
    return application().keyUpData;
}
