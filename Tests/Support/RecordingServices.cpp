#include <app.h>
#include <aul.h>
#include <keygrab.h>
#include <system_info.h>
#include <tvcontext.h>

#include "Tests/Support/RecordingCall.h"

using recording::application;
using recording::Call;
using recording::NameOf;

namespace {

std::string Hex(unsigned int value)
{
    std::ostringstream text;
    text << "0x" << std::hex << value;
    return text.str();
}

/// A list's number, in the order of `Grab_InitKeys`, kept where the service may keep what it likes.
int& NumberOf(GrabKeyList* list)
{
    return list->keys[0].result;
}

int listCount = 0;

} // namespace

recording::Application& recording::application()
{
    static Application instance;
    return instance;
}

int ui_app_add_event_handler(app_event_handler_h* event_handler, app_event_type_e event_type, app_event_cb callback,
                             void* user_data)
{
    // Slots are told apart by their distance from the first that was handed in, type 1's.
    static app_event_handler_h* batterySlot = nullptr;
    if (event_type == APP_EVENT_LOW_BATTERY) {
        batterySlot = event_handler;
    }
    Call("ui_app_add_event_handler", static_cast<int>(event_type), callback == nullptr ? "no callback" : "callback",
         "slot", event_handler - batterySlot + APP_EVENT_LOW_BATTERY, *event_handler == nullptr ? "zero" : "used",
         NameOf(user_data));
    if (event_type == APP_EVENT_LANGUAGE_CHANGED) {
        application().languageChanged = callback;
    }
    *event_handler = reinterpret_cast<app_event_handler_h>(event_handler);
    return -1;
}

int ui_app_main(int argc, char** argv, ui_app_lifecycle_callback_s* callback, void* user_data)
{
    Call("ui_app_main", argc, argv[0], NameOf(user_data));
    return application().mainLoop ? application().mainLoop(*callback) : 0;
}

int tvcontext_init()
{
    Call("tvcontext_init");
    return -1;
}

int tvcontext_begin_popup_free()
{
    Call("tvcontext_begin_popup_free");
    return -1;
}

int tvcontext_end_popup_free()
{
    Call("tvcontext_end_popup_free");
    return -1;
}

int tvcontext_fini()
{
    Call("tvcontext_fini");
    return -1;
}

int system_info_get_value_int(system_info_key_e key, int* value)
{
    Call("system_info_get_value_int", static_cast<int>(key));
    const int result = application().screenInfoResults[key];
    if (result == 0) {
        *value = key == SYSTEM_INFO_KEY_SCREEN_WIDTH ? application().screenWidth : application().screenHeight;
    }
    return result;
}

int Grab_InitKeys(GrabKeyList* list)
{
    NumberOf(list) = ++listCount;
    Call("Grab_InitKeys", listCount);
    return -1;
}

int Grab_AddKey(GrabKeyList* list, int keyId, unsigned int mode)
{
    Call("Grab_AddKey", NumberOf(list), keyId, Hex(mode));
    return -1;
}

int Grab_RegisterKeys(void* display, unsigned int window, GrabKeyList* list)
{
    Call("Grab_RegisterKeys", NameOf(display), window, NumberOf(list));
    return -1;
}

int UnGrab_RegisterKeys(void* display, unsigned int window, GrabKeyList* list)
{
    Call("UnGrab_RegisterKeys", NameOf(display), window, NumberOf(list));
    listCount = 0;
    return -1;
}

int aul_launch_app(const char* appid, bundle* kb)
{
    Call("aul_launch_app", appid, NameOf(kb));
    return application().launchResult;
}
