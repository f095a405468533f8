#include <vector>

#include <app.h>
#include <Ecore.h>
#include <Ecore_X.h>

#include "Platform/desktop/app/AppEvents.h"
#include "Platform/desktop/app/CommandLine.h"
#include "Platform/desktop/app/KeyGrab.h"
#include "Platform/desktop/app/KeyWindow.h"
#include "Platform/desktop/app/OwnInstance.h"
#include "Platform/desktop/app/ToolkitSetup.h"
#include "Platform/desktop/app/XServerLoss.h"
#include "Platform/desktop/base/PlatformLog.h"
#include "Platform/desktop/environment/EndSignals.h"
#include "Platform/desktop/x11/XConnection.h"

namespace {

using namespace desktop;

constexpr int kFailure = -1;

/// Runs before `main`. The steps of `main` belong to the product and are the same on every platform, so
/// the preparations for a desktop are made here. Options such as --help are answered before the toolkit
/// starts, which needs a display.
///
/// Only a program that links this object, for its `ui_app_main`, runs this. The C library passes the
/// arguments of `main` to constructor functions.
[[gnu::constructor]] void PrepareProcess(int argc, char** argv)
{
    AnswerCommandLine(argc, argv);
    // The environment is set first: CatchEndSignals initialises the toolkit's main loop, which reads it.
    PrepareForToolkit();
    CatchEndSignals(LeaveAtOnce);
}

/// The application's life between create and terminate. One exists, during `ui_app_main`.
class Lifecycle {
public:
    Lifecycle(const ui_app_lifecycle_callback_s& callbacks, void* userData) : callbacks_(callbacks), userData_(userData)
    {
        running_ = this;
        ListenForLaunchRequests(OnLaunch);
        // These event types are 0 before the first window. Windows above this one do not count as hiding
        // it: it exists for the keys and shows nothing on a desktop anyway.
        AddHandler(ECORE_X_EVENT_WINDOW_SHOW, OnShow);
        AddHandler(ECORE_X_EVENT_WINDOW_HIDE, OnHide);
    }

    ~Lifecycle()
    {
        for (Ecore_Event_Handler* handler : handlers_) {
            ecore_event_handler_del(handler);
        }
        ListenForLaunchRequests(nullptr);
        running_ = nullptr;
    }

    Lifecycle(const Lifecycle&) = delete;
    Lifecycle& operator=(const Lifecycle&) = delete;

    void Run()
    {
        Launch();
        PublishKeyWindow(KeyWindow());
        EndMainLoopOnSignal(ecore_main_loop_quit);
        ecore_main_loop_begin();
        LimitTeardown();
        // Before anything else, so that the next start can take over while this one restores popups.
        ReleaseHeldKeys();
        GiveUpInstance();
        Pause();
        if (callbacks_.terminate != nullptr) {
            callbacks_.terminate(userData_);
        }
    }

private:
    void AddHandler(int type, Ecore_Event_Handler_Cb callback)
    {
        if (type != 0) {
            handlers_.push_back(ecore_event_handler_add(type, callback, this));
        }
    }

    void Launch()
    {
        if (callbacks_.app_control != nullptr) {
            callbacks_.app_control(nullptr, userData_);
        }
    }

    void Resume()
    {
        if (!resumed_ && callbacks_.resume != nullptr) {
            callbacks_.resume(userData_);
        }
        resumed_ = true;
    }

    void Pause()
    {
        if (resumed_ && callbacks_.pause != nullptr) {
            callbacks_.pause(userData_);
        }
        resumed_ = false;
    }

    static void OnLaunch() { running_->Launch(); }

    static Eina_Bool OnShow(void* data, int /*type*/, void* /*event*/)
    {
        static_cast<Lifecycle*>(data)->Resume();
        return ECORE_CALLBACK_PASS_ON;
    }

    static Eina_Bool OnHide(void* data, int /*type*/, void* /*event*/)
    {
        static_cast<Lifecycle*>(data)->Pause();
        return ECORE_CALLBACK_PASS_ON;
    }

    static Lifecycle* running_;

    const ui_app_lifecycle_callback_s& callbacks_;
    void* userData_;
    bool resumed_ = false;
    std::vector<Ecore_Event_Handler*> handlers_;
};

Lifecycle* Lifecycle::running_ = nullptr;

/// The first step of every entry point: a second start must end before it changes anything.
void EnterDisplay()
{
    BecomeTheInstance();
    ExitWhenXServerIsLost();
}

} // namespace

int ui_app_add_event_handler(app_event_handler_h* event_handler, app_event_type_e event_type, app_event_cb callback,
                             void* user_data)
{
    EnterDisplay();
    if (event_handler == nullptr || callback == nullptr || event_type < APP_EVENT_LOW_MEMORY ||
        event_type > APP_EVENT_REGION_FORMAT_CHANGED) {
        return kFailure;
    }
    *event_handler = AddAppEventHandler(event_type, callback, user_data);
    return 0;
}

int ui_app_main(int /*argc*/, char** /*argv*/, ui_app_lifecycle_callback_s* callback, void* user_data)
{
    EnterDisplay();
    if (callback == nullptr) {
        return kFailure;
    }
    if (OwnDisplay() == nullptr) {
        PLATFORM_LOG(DLOG_ERROR, "no X display: cannot open \"%s\" (DISPLAY), the application ends",
                     XDisplayName(nullptr));
        return kFailure;
    }
    if (KeyWindow() == None) {
        PLATFORM_LOG(DLOG_ERROR, "the toolkit has opened no window that keys could arrive at, the application ends");
        return kFailure;
    }
    if (callback->create != nullptr && !callback->create(user_data)) {
        PLATFORM_LOG(DLOG_ERROR, "the application refused to be created");
        return kFailure;
    }
    const AppEventSources events;
    Lifecycle(*callback, user_data).Run();
    return 0;
}
