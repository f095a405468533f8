#pragma once

#include <vector>

#include <app.h>
#include <Ecore.h>

/// Where the application events of app.h come from. Main thread only.
namespace desktop {

/// Runs `callback` for each event of this type from now on, as soon as the sources are watched.
/// The handle lives as long as the process.
app_event_handler_h AddAppEventHandler(app_event_type_e type, app_event_cb callback, void* userData);

/// Watches the source of every event type that has a handler, until it goes. The toolkit's
/// loop must be initialised.
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
