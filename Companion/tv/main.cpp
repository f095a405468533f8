#include <cstdio>
#include <cstdlib>
#include <memory>

#include <app.h>
#include <Elementary.h>

#include "Companion/CompanionWindow.h"

/// The companion on the TV. The application framework keeps it to one instance: a launch while it runs
/// arrives as another app_control.

namespace {

/// What the callbacks get as their user data.
struct Companion {
    std::unique_ptr<CompanionWindow> window;
};

bool Create(void* data)
{
    static_cast<Companion*>(data)->window = std::make_unique<CompanionWindow>();
    return true;
}

void BringForward(app_control_h /*request*/, void* data)
{
    static_cast<Companion*>(data)->window->Raise();
}

/// While the toolkit still runs, which the window needs to be deleted.
void Terminate(void* data)
{
    static_cast<Companion*>(data)->window.reset();
}

void Ignore(void* /*data*/) {}

} // namespace

int main(int argc, char** argv)
{
    if (elm_init(argc, argv) <= 0) {
        std::fputs("VQMCompanion: cannot start the toolkit\n", stderr);
        return EXIT_FAILURE;
    }
    Companion companion;
    ui_app_lifecycle_callback_s callbacks = {};
    callbacks.create = Create;
    callbacks.terminate = Terminate;
    callbacks.pause = Ignore;
    callbacks.resume = Ignore;
    callbacks.app_control = BringForward;
    const int result = ui_app_main(argc, argv, &callbacks, &companion);
    companion.window.reset(); // a framework that failed to start does not call Terminate
    elm_shutdown();
    return result;
}
