#pragma once

#include <vector>

#include <app.h>
#include <Ecore.h>

/// The sources of the application events of app.h. Main thread only.
namespace desktop {

/// Runs `callback` for each later event of this type, once the sources are watched. The handle lives as
/// long as the process.
app_event_handler_h AddAppEventHandler(app_event_type_e type, app_event_cb callback, void* userData);

/// Watches the source of every event type that has a handler, for as long as the object lives. The
/// toolkit's loop must be initialised.
class AppEventSources {
public:
    AppEventSources();
    ~AppEventSources();

    AppEventSources(const AppEventSources&) = delete;
    AppEventSources& operator=(const AppEventSources&) = delete;

private:
    std::vector<Ecore_Event_Handler*> ecoreHandlers_;
    bool watchesLanguage_ = false;
};

} // namespace desktop
