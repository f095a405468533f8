#include "Companion/CompanionWindow.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include <Ecore_X.h>

#include "Common/VQMSyncDemoMonitor.h"
#include "Companion/Model/Language.h"

namespace {

using Seconds = std::chrono::duration<double>;

constexpr char kTitle[] = "Sync demo";

/// A check that takes longer is mentioned.
constexpr Seconds kPatience{2};
constexpr int kMinute = 60;

/// The keys of remotes and keyboards that close a window.
constexpr std::array<std::string_view, 6> kClosingKeys = {"Escape",   "Cancel",    "XF86Back",
                                                          "XF86Exit", "XF86Close", "XF86Stop"};

bool IsWindowManaged()
{
    // The root's property outlives a manager that was killed; the window that it names does not.
    const Ecore_X_Atom check = ECORE_X_ATOM_NET_SUPPORTING_WM_CHECK;
    Ecore_X_Window manager = 0;
    Ecore_X_Window same = 0;
    return ecore_x_window_prop_window_get(ecore_x_window_root_first_get(), check, &manager, 1) == 1 &&
           ecore_x_window_prop_window_get(manager, check, &same, 1) == 1 && same == manager;
}

void OnCloseRequested(void* /*data*/, Evas_Object* /*object*/, void* /*event*/)
{
    elm_exit();
}

/// How long until the next minute begins, or something else plays.
Seconds UntilNextTime(const companion::Screen* screen, int second)
{
    const bool changes = screen != nullptr && screen->next && screen->next->second > second;
    const int next = (second / kMinute + 1) * kMinute;
    // A little later: the clock must have got there.
    return Seconds((changes ? std::min(next, screen->next->second) : next) - second + 0.05);
}

} // namespace

CompanionWindow::CompanionWindow()
    : check_([this](companion::Checked checked) { OnChecked(std::move(checked)); }, [this] { OnFilesChanged(); })
{
    // Registered before the first read, so that no change falls between the two.
    vconf_notify_key_changed(companion::kLanguageKey, OnLanguageChanged, this);
    TakeLanguage();
    Build();
    CVQMSyncDemoMonitor::SetVconfCallBack(reinterpret_cast<void*>(&CompanionWindow::OnSettingChanged), this);
    shown_.enabled = CVQMSyncDemoMonitor::CheckSyncDemoEnbaled();
    OnTime(this);
}

CompanionWindow::~CompanionWindow()
{
    for (Ecore_Timer* timer : {time_, settling_, patience_}) {
        if (timer != nullptr) {
            ecore_timer_del(timer);
        }
    }
    CVQMSyncDemoMonitor::UnSetVconfCallBack(reinterpret_cast<void*>(&CompanionWindow::OnSettingChanged));
    vconf_ignore_key_changed(companion::kLanguageKey, OnLanguageChanged);
    view_.reset(); // it lets go of the window
    evas_object_del(window_);
}

void CompanionWindow::Build()
{
    elm_config_cache_flush_enabled_set(EINA_FALSE); // it would wake the process every minute
    window_ = elm_win_util_standard_add("sync-demo", kTitle);
    evas_object_smart_callback_add(window_, "delete,request", OnCloseRequested, nullptr);
    elm_object_event_callback_add(window_, OnInput, nullptr);

    int width = 0;
    int height = 0;
    elm_win_screen_size_get(window_, nullptr, nullptr, &width, &height);
    evas_object_resize(window_, width, height);
    view_ = std::make_unique<companion::ScreenView>(
        window_, [](bool enable) { CVQMSyncDemoMonitor::SetSyncDemoVocnf(enable); }, elm_exit);
    // The toolkit draws nothing before a window manager has mapped the window. Without a manager, it must
    // not wait for one.
    const bool managed = IsWindowManaged();
    elm_win_override_set(window_, managed ? EINA_FALSE : EINA_TRUE);
    elm_win_fullscreen_set(window_, managed ? EINA_TRUE : EINA_FALSE);
}

void CompanionWindow::Raise()
{
    elm_win_iconified_set(window_, EINA_FALSE);
    evas_object_show(window_);
    elm_win_raise(window_);
    elm_win_activate(window_);
    if (elm_win_override_get(window_) != EINA_FALSE) {
        ecore_x_window_focus(elm_win_xwindow_get(window_));
    }
}

void CompanionWindow::Show()
{
    shown_.second = schedule::ReadClock().now.second;
    view_->Show(shown_);
}

void CompanionWindow::TakeLanguage()
{
    companion::FollowMenuLanguage();
    elm_config_mirrored_set(companion::IsRightToLeft() ? EINA_TRUE : EINA_FALSE);
}

void CompanionWindow::StartCheck()
{
    changes_.Done();
    if (!check_.IsRunning()) {
        Restart(patience_, kPatience, OnPatienceOver);
    }
    check_.Start();
}

void CompanionWindow::OnChecked(companion::Checked checked)
{
    if (patience_ != nullptr) {
        ecore_timer_del(std::exchange(patience_, nullptr));
    }
    shown_.stillChecking = false;
    shown_.problem = std::move(checked.problem);
    shown_.screen =
        shown_.problem.empty() ? std::make_shared<const companion::Screen>(std::move(checked.screen)) : nullptr;
    Show();
    Restart(time_, UntilNextTime(shown_.screen.get(), shown_.second), OnTime);
}

void CompanionWindow::OnFilesChanged()
{
    const Settling::Clock::time_point now = Settling::Clock::now();
    Restart(settling_, changes_.OnChange(now) - now, OnSettled);
}

void CompanionWindow::Restart(Ecore_Timer*& timer, Seconds delay, Ecore_Task_Cb action)
{
    if (timer != nullptr) {
        ecore_timer_del(timer);
    }
    timer = ecore_timer_add(std::max(delay.count(), 0.0), action, this);
}

void CompanionWindow::OnSettingChanged(keynode_t* /*node*/, void* data)
{
    auto* const self = static_cast<CompanionWindow*>(data);
    self->shown_.enabled = CVQMSyncDemoMonitor::CheckSyncDemoEnbaled();
    self->Show();
}

void CompanionWindow::OnLanguageChanged(keynode_t* /*node*/, void* data)
{
    auto* const self = static_cast<CompanionWindow*>(data);
    self->TakeLanguage();
    self->Show();
}

/// A check follows: what nothing watches, as a disk that was plugged in, is seen within a minute.
Eina_Bool CompanionWindow::OnTime(void* data)
{
    auto* const self = static_cast<CompanionWindow*>(data);
    self->time_ = nullptr;
    self->Show();
    self->Restart(self->time_, UntilNextTime(self->shown_.screen.get(), self->shown_.second), OnTime);
    self->StartCheck();
    return ECORE_CALLBACK_CANCEL;
}

Eina_Bool CompanionWindow::OnSettled(void* data)
{
    auto* const self = static_cast<CompanionWindow*>(data);
    self->settling_ = nullptr;
    self->StartCheck();
    return ECORE_CALLBACK_CANCEL;
}

Eina_Bool CompanionWindow::OnPatienceOver(void* data)
{
    auto* const self = static_cast<CompanionWindow*>(data);
    self->patience_ = nullptr;
    self->shown_.stillChecking = true;
    self->Show();
    return ECORE_CALLBACK_CANCEL;
}

Eina_Bool CompanionWindow::OnInput(void* /*data*/, Evas_Object* /*object*/, Evas_Object* /*source*/,
                                   Evas_Callback_Type type, void* event)
{
    if (type != EVAS_CALLBACK_KEY_DOWN) {
        return EINA_FALSE;
    }
    const std::string_view key = static_cast<const Evas_Event_Key_Down*>(event)->key;
    if (std::find(kClosingKeys.begin(), kClosingKeys.end(), key) == kClosingKeys.end()) {
        return EINA_FALSE;
    }
    elm_exit();
    return EINA_TRUE;
}
