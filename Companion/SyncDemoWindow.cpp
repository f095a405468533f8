#include "Companion/SyncDemoWindow.h"

#include <algorithm>
#include <array>
#include <string_view>

#include <Ecore_X.h>

#include "Common/VQMSyncDemoMonitor.h"

namespace {

constexpr char kTitle[] = "Sync demo";
constexpr int kWidth = 640;
constexpr int kHeight = 360;

constexpr char kHeading[] = "<align=center><font_size=20>Sync demo is</font_size></align>";
constexpr char kOn[] = "<align=center><font_size=72><color=#7fd37f>on</color></font_size></align>";
constexpr char kOff[] = "<align=center><font_size=72><color=#b0b0b0>off</color></font_size></align>";
constexpr char kOnText[] = "<align=center><font_size=14>This TV plays the demo media<br/>"
                           "in step with the TVs around it.</font_size></align>";
constexpr char kOffText[] = "<align=center><font_size=14>This TV plays on its own.<br/>"
                            "The tool key opens this window only while the sync demo is on.</font_size></align>";

/// The keys of remotes and keyboards that close a window.
constexpr std::array<std::string_view, 6> kClosingKeys = {"Escape",   "Cancel",    "XF86Back",
                                                          "XF86Exit", "XF86Close", "XF86Stop"};

Evas_Object* AddLabel(Evas_Object* window, Evas_Object* box, const char* markup)
{
    Evas_Object* label = elm_label_add(window);
    elm_object_text_set(label, markup);
    evas_object_size_hint_weight_set(label, EVAS_HINT_EXPAND, 0);
    evas_object_size_hint_align_set(label, EVAS_HINT_FILL, EVAS_HINT_FILL);
    elm_box_pack_end(box, label);
    evas_object_show(label);
    return label;
}

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

} // namespace

SyncDemoWindow::SyncDemoWindow()
{
    Build();
    // Registered before the first read, so that no change falls between the two.
    CVQMSyncDemoMonitor::SetVconfCallBack(reinterpret_cast<void*>(&SyncDemoWindow::OnSettingChanged), this);
    ShowState(CVQMSyncDemoMonitor::CheckSyncDemoEnbaled());
}

SyncDemoWindow::~SyncDemoWindow()
{
    CVQMSyncDemoMonitor::UnSetVconfCallBack(reinterpret_cast<void*>(&SyncDemoWindow::OnSettingChanged));
    evas_object_del(window_);
}

void SyncDemoWindow::Build()
{
    window_ = elm_win_util_standard_add("sync-demo", kTitle);
    evas_object_smart_callback_add(window_, "delete,request", OnCloseRequested, nullptr);
    elm_object_event_callback_add(window_, OnInput, nullptr);

    Evas_Object* box = elm_box_add(window_);
    evas_object_size_hint_weight_set(box, EVAS_HINT_EXPAND, EVAS_HINT_EXPAND);
    elm_box_padding_set(box, 0, ELM_SCALE_SIZE(12));
    elm_win_resize_object_add(window_, box);
    evas_object_show(box);

    AddLabel(window_, box, kHeading);
    state_ = AddLabel(window_, box, kOff);
    explanation_ = AddLabel(window_, box, kOffText);

    Evas_Object* button = elm_button_add(window_);
    elm_object_text_set(button, "Close");
    evas_object_size_hint_min_set(button, ELM_SCALE_SIZE(120), ELM_SCALE_SIZE(32));
    evas_object_smart_callback_add(button, "clicked", OnCloseRequested, nullptr);
    elm_box_pack_end(box, button);
    evas_object_show(button);
    elm_object_focus_set(button, EINA_TRUE);

    evas_object_resize(window_, ELM_SCALE_SIZE(kWidth), ELM_SCALE_SIZE(kHeight));
    elm_win_center(window_, EINA_TRUE, EINA_TRUE);
    // The toolkit draws nothing before a window manager has mapped the window. Without a manager, it must
    // not wait for one.
    elm_win_override_set(window_, IsWindowManaged() ? EINA_FALSE : EINA_TRUE);
}

void SyncDemoWindow::Raise()
{
    elm_win_iconified_set(window_, EINA_FALSE);
    evas_object_show(window_);
    elm_win_raise(window_);
    elm_win_activate(window_);
    if (elm_win_override_get(window_) != EINA_FALSE) {
        ecore_x_window_focus(elm_win_xwindow_get(window_));
    }
}

void SyncDemoWindow::ShowState(bool enabled)
{
    elm_object_text_set(state_, enabled ? kOn : kOff);
    elm_object_text_set(explanation_, enabled ? kOnText : kOffText);
}

void SyncDemoWindow::OnSettingChanged(keynode_t* /*node*/, void* data)
{
    static_cast<SyncDemoWindow*>(data)->ShowState(CVQMSyncDemoMonitor::CheckSyncDemoEnbaled());
}

Eina_Bool SyncDemoWindow::OnInput(void* /*data*/, Evas_Object* /*object*/, Evas_Object* /*source*/,
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
