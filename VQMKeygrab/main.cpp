#include <cstdlib>
#include <libintl.h>

#include <app.h>
#include <Elementary.h>
#include <tvcontext.h>
#include <vconf.h>

#include "Common/VQMLog.h"
#include "VQMKeygrab/VQMKeyGrab.h"

CVQMKeyGrab* gkeygrab = nullptr;

namespace {

constexpr char kLanguageKey[] = "db/menu_widget/language";
constexpr char kTextDomain[] = VQM_LOG_TAG;
constexpr char kCatalogueDirectory[] = "/usr/share/locale";
constexpr int kEventTypes = APP_EVENT_REGION_FORMAT_CHANGED + 1;

bool _create(void* /*data*/)
{
    return true;
}

void _terminate(void* /*data*/)
{
    VQM_LOG_INFO("_terminate() called");
    elm_cache_all_flush();
}

void _pause(void* /*data*/)
{
    VQM_LOG_INFO("_pause() called start");
}

void _resume(void* /*data*/)
{
    VQM_LOG_INFO("_resume() called start");
}

void _app_control(app_control_h /*request*/, void* /*data*/)
{
    VQM_LOG_INFO("_app_control() called start");
    VQM_LOG_INFO("_app_control() called end");
}

void _languageChange(app_event_info* /*event*/, void* /*data*/)
{
    char* language = vconf_get_str(kLanguageKey);
    if (language != nullptr) {
        elm_language_set(language);
        // The misspelling is intended.
        VQM_LOG_DEBUG("Set Lanauge: %s\n", language);
        std::free(language);
    } else {
        VQM_LOG_DEBUG("Can not Set multi-language mode!! \n");
    }
    // Also without a language: intended.
    bindtextdomain(kTextDomain, kCatalogueDirectory);
}

/// Each event type has its own slot in `handlers`; only a change of language is acted on.
/// The other types are registered without a callback, and no result is checked: intended.
void RegisterEventHandlers(app_event_handler_h (&handlers)[kEventTypes])
{
    const struct {
        app_event_type_e type;
        app_event_cb callback;
    } registrations[] = {
        {APP_EVENT_LOW_BATTERY, nullptr},
        {APP_EVENT_LOW_MEMORY, nullptr},
        {APP_EVENT_DEVICE_ORIENTATION_CHANGED, nullptr},
        {APP_EVENT_LANGUAGE_CHANGED, _languageChange},
        {APP_EVENT_REGION_FORMAT_CHANGED, nullptr},
    };
    for (const auto& registration : registrations) {
        ui_app_add_event_handler(&handlers[registration.type], registration.type, registration.callback, nullptr);
    }
}

/// The popup service may throw. The application then runs on, with popups.
void BlockPopups(const char* function)
{
    try {
        VQM_LOG_DEBUG_AS(function, "block popups start.");
        tvcontext_init();
        tvcontext_begin_popup_free();
        VQM_LOG_DEBUG_AS(function, "block popups end");
    } catch (...) {
        VQM_LOG_DEBUG_AS(function, "Exception while block popup's");
    }
}

void UnblockPopups(const char* function)
{
    try {
        VQM_LOG_DEBUG_AS(function, "Unblock popups start.");
        tvcontext_end_popup_free();
        tvcontext_fini();
        VQM_LOG_DEBUG_AS(function, "Unblock popups end");
    } catch (...) {
        VQM_LOG_DEBUG_AS(function, "Exception while clearing popup's");
    }
}

} // namespace

int elm_main(int argc, char** argv)
{
    VQM_LOG_DEBUG("VQMKeygrab main Start\n");

    ui_app_lifecycle_callback_s callbacks = {};
    callbacks.create = _create;
    callbacks.terminate = _terminate;
    callbacks.pause = _pause;
    callbacks.resume = _resume;
    callbacks.app_control = _app_control;

    app_event_handler_h handlers[kEventTypes] = {};
    RegisterEventHandlers(handlers);

    BlockPopups(__func__);
    // Outside any try: without memory for the key grab there is nothing to run.
    gkeygrab = new CVQMKeyGrab;

    const int result = ui_app_main(argc, argv, &callbacks, nullptr);

    // The window goes first, so that no popup can show above a grabbed key.
    if (gkeygrab != nullptr) {
        delete gkeygrab;
        gkeygrab = nullptr;
    }
    UnblockPopups(__func__);

    VQM_LOG_DEBUG("VQMKeygrab main End\n");
    return result;
}

int main(int argc, char** argv)
{
    // The steps of the toolkit's ELM_MAIN.
    _elm_startup_time = ecore_time_unix_get();
    elm_init(argc, argv);
    const int result = elm_main(argc, argv);
    elm_shutdown();
    return result;
}
