#pragma once

/// The application framework: one main loop, five lifecycle callbacks, five events.
///
/// Every callback runs on the thread that called `ui_app_main`.

// NOLINTBEGIN(modernize-use-using): the interface is C.

#ifdef __cplusplus
extern "C" {
#else
#include <stdbool.h>
#endif

/// A request that another program sent to this application; owned by the framework and valid
/// only during the callback that receives it.
typedef struct app_control_s* app_control_h;

typedef bool (*app_create_cb)(void* user_data);
typedef void (*app_terminate_cb)(void* user_data);
typedef void (*app_pause_cb)(void* user_data);
typedef void (*app_resume_cb)(void* user_data);
typedef void (*app_control_cb)(app_control_h app_control, void* user_data);

typedef struct {
    app_create_cb create;       ///< Once, before the main loop; false keeps the loop from running.
    app_terminate_cb terminate; ///< Once, after the main loop.
    app_pause_cb pause;         ///< The window is no longer visible.
    app_resume_cb resume;       ///< The window became visible.
    app_control_cb app_control; ///< The application was started, or started again.
} ui_app_lifecycle_callback_s;

typedef enum {
    APP_EVENT_LOW_MEMORY = 0,
    APP_EVENT_LOW_BATTERY = 1,
    APP_EVENT_LANGUAGE_CHANGED = 2,
    APP_EVENT_DEVICE_ORIENTATION_CHANGED = 3,
    APP_EVENT_REGION_FORMAT_CHANGED = 4,
} app_event_type_e;

typedef struct app_event_handler* app_event_handler_h;
typedef struct app_event_info* app_event_info_h;
typedef void (*app_event_cb)(app_event_info_h event_info, void* user_data);

/// Runs `callback` for each event of the given type from now on. A null callback is refused.
/// `*event_handler` receives a handle that the framework owns.
/// Returns 0, or a negative error.
int ui_app_add_event_handler(app_event_handler_h* event_handler, app_event_type_e event_type, app_event_cb callback,
                             void* user_data);

/// Runs the application until it is told to end. `callback` must stay valid until the return.
/// Returns 0 after an orderly end, otherwise a negative error.
int ui_app_main(int argc, char** argv, ui_app_lifecycle_callback_s* callback, void* user_data);

#ifdef __cplusplus
}
#endif

// NOLINTEND(modernize-use-using)
