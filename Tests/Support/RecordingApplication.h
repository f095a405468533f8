#pragma once

#include <functional>
#include <map>
#include <string>

#include <app.h>

/// The toolkit and the five services of an application with a window, recorded.
namespace recording {

/// The answers of the toolkit and the services. The objects that they return have names in the trace:
/// "window", "canvas", "rectangle", "display".
struct Application {
    /// Steps of the window's creation that fail.
    bool noWindow = false;
    bool noCanvas = false;
    bool noRectangle = false;
    bool noDisplay = false;
    /// The result of `evas_object_ref_get` for every object.
    int references = 0;

    int screenWidth = 1920;
    int screenHeight = 1080;
    /// Results of `system_info_get_value_int` by key.
    std::map<int, int> screenInfoResults;

    int elmInitResult = 1;
    int launchResult = 4711;
    /// Runs in place of the main loop; its result is `ui_app_main`'s.
    std::function<int(const ui_app_lifecycle_callback_s&)> mainLoop;

    /// Run when the function of that name is called, after the call was recorded; may throw.
    std::map<std::string, std::function<void()>> onCall;

    /// The language handler, as it was registered.
    app_event_cb languageChanged = nullptr;
    /// The key-up listener's data, as it was registered.
    void* keyUpData = nullptr;
};

/// The one application; `application() = {}` starts afresh.
Application& application();

} // namespace recording
