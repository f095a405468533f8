#include "Platform/desktop/app/AppEvents.h"

#include <algorithm>
#include <memory>
#include <vector>

#include <Ecore.h>
#include <Ecore_X.h>
#include <vconf.h>

/// One registered handler.
struct app_event_handler {
    app_event_type_e type;
    app_event_cb callback;
    void* userData;
};

/// The information that a handler gets about its event.
struct app_event_info {
    app_event_type_e type;
};

namespace desktop {

namespace {

constexpr char kLanguageKey[] = "db/menu_widget/language";

std::vector<std::unique_ptr<app_event_handler>>& Handlers()
{
    static std::vector<std::unique_ptr<app_event_handler>> handlers;
    return handlers;
}

bool HasHandler(app_event_type_e type)
{
    const auto& handlers = Handlers();
    return std::any_of(handlers.begin(), handlers.end(), [&](const auto& handler) { return handler->type == type; });
}

void Raise(app_event_type_e type)
{
    app_event_info info = {type};
    // By index: a handler may add handlers.
    // NOLINTNEXTLINE(modernize-loop-convert)
    for (std::size_t i = 0; i < Handlers().size(); ++i) {
        const app_event_handler handler = *Handlers()[i];
        if (handler.type == type) {
            handler.callback(&info, handler.userData);
        }
    }
}

void OnLanguageChanged(keynode_t* /*node*/, void* /*data*/)
{
    Raise(APP_EVENT_LANGUAGE_CHANGED);
}

Eina_Bool OnMemoryState(void* /*data*/, int /*type*/, void* /*event*/)
{
    if (ecore_memory_state_get() == ECORE_MEMORY_STATE_LOW) {
        Raise(APP_EVENT_LOW_MEMORY);
    }
    return ECORE_CALLBACK_PASS_ON;
}

Eina_Bool OnPowerState(void* /*data*/, int /*type*/, void* /*event*/)
{
    if (ecore_power_state_get() == ECORE_POWER_STATE_LOW) {
        Raise(APP_EVENT_LOW_BATTERY);
    }
    return ECORE_CALLBACK_PASS_ON;
}

Eina_Bool OnLocaleChanged(void* /*data*/, int /*type*/, void* /*event*/)
{
    Raise(APP_EVENT_REGION_FORMAT_CHANGED);
    return ECORE_CALLBACK_PASS_ON;
}

Eina_Bool OnScreenChanged(void* /*data*/, int /*type*/, void* event)
{
    // Changes of the resolution arrive here as well. The screen is taken to be unrotated at the start.
    static Ecore_X_Randr_Orientation orientation = ECORE_X_RANDR_ORIENTATION_ROT_0;
    const auto* change = static_cast<const Ecore_X_Event_Screen_Change*>(event);
    if (change->orientation != orientation) {
        orientation = change->orientation;
        Raise(APP_EVENT_DEVICE_ORIENTATION_CHANGED);
    }
    return ECORE_CALLBACK_PASS_ON;
}

} // namespace

app_event_handler_h AddAppEventHandler(app_event_type_e type, app_event_cb callback, void* userData)
{
    Handlers().push_back(std::make_unique<app_event_handler>(app_event_handler{type, callback, userData}));
    return Handlers().back().get();
}

AppEventSources::AppEventSources()
{
    const struct {
        app_event_type_e type;
        int ecoreType;
        Ecore_Event_Handler_Cb callback;
    } sources[] = {
        {APP_EVENT_LOW_MEMORY, ECORE_EVENT_MEMORY_STATE, OnMemoryState},
        {APP_EVENT_LOW_BATTERY, ECORE_EVENT_POWER_STATE, OnPowerState},
        {APP_EVENT_REGION_FORMAT_CHANGED, ECORE_EVENT_LOCALE_CHANGED, OnLocaleChanged},
        // Without a toolkit window there is no X connection, and this type is 0.
        {APP_EVENT_DEVICE_ORIENTATION_CHANGED, ECORE_X_EVENT_SCREEN_CHANGE, OnScreenChanged},
    };
    for (const auto& source : sources) {
        if (HasHandler(source.type) && source.ecoreType != 0) {
            ecoreHandlers_.push_back(ecore_event_handler_add(source.ecoreType, source.callback, nullptr));
        }
    }
    if (HasHandler(APP_EVENT_DEVICE_ORIENTATION_CHANGED) && ECORE_X_EVENT_SCREEN_CHANGE != 0) {
        ecore_x_randr_events_select(ecore_x_window_root_first_get(), EINA_TRUE);
    }
    if (HasHandler(APP_EVENT_LANGUAGE_CHANGED)) {
        watchesLanguage_ = vconf_notify_key_changed(kLanguageKey, OnLanguageChanged, nullptr) == 0;
    }
}

AppEventSources::~AppEventSources()
{
    if (watchesLanguage_) {
        vconf_ignore_key_changed(kLanguageKey, OnLanguageChanged);
    }
    for (Ecore_Event_Handler* handler : ecoreHandlers_) {
        ecore_event_handler_del(handler);
    }
}

} // namespace desktop
