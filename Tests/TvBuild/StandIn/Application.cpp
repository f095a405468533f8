#include <cstdlib>

#include <app.h>
#include <Ecore.h>
#include <Efreet.h>

namespace {

// A test machine has neither the TV's system services nor use for its caches.
[[gnu::constructor]] void KeepTheToolkitQuiet()
{
    setenv("ECORE_NO_SYSTEM_MODULES", "1", 0);
    efreet_cache_disable();
}

Eina_Bool Quit(void* /*data*/, int /*type*/, void* /*event*/)
{
    ecore_main_loop_quit();
    return ECORE_CALLBACK_CANCEL;
}

} // namespace

int ui_app_add_event_handler(app_event_handler_h* /*event_handler*/, app_event_type_e /*event_type*/,
                             app_event_cb callback, void* /*user_data*/)
{
    return callback == nullptr ? -1 : 0;
}

int ui_app_main(int /*argc*/, char** /*argv*/, ui_app_lifecycle_callback_s* callback, void* user_data)
{
    if (!callback->create(user_data)) {
        return -1;
    }
    Ecore_Event_Handler* handler = ecore_event_handler_add(ECORE_EVENT_SIGNAL_EXIT, Quit, nullptr);
    callback->app_control(nullptr, user_data);
    callback->resume(user_data);
    ecore_main_loop_begin();
    ecore_event_handler_del(handler);
    callback->pause(user_data);
    callback->terminate(user_data);
    return 0;
}
