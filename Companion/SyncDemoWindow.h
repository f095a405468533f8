#pragma once

#include <Elementary.h>
#include <vconf.h>

/// The companion's window: what the sync demo is, whether it is on right now, and a way out.
///
/// Exists between the start of the toolkit and its end, on the main loop's thread. Closing it ends
/// the main loop.
class SyncDemoWindow {
public:
    SyncDemoWindow();
    ~SyncDemoWindow();

    SyncDemoWindow(const SyncDemoWindow&) = delete;
    SyncDemoWindow& operator=(const SyncDemoWindow&) = delete;

    /// Brings the window to the user: shown, not minimised, above the others, with the focus.
    void Raise();

private:
    void Build();
    void ShowState(bool enabled);

    static void OnSettingChanged(keynode_t* node, void* data);
    /// Input that the focused part of the window left alone.
    static Eina_Bool OnInput(void* data, Evas_Object* object, Evas_Object* source, Evas_Callback_Type type,
                             void* event);

    Evas_Object* window_ = nullptr; ///< owns everything in it
    Evas_Object* state_ = nullptr;
    Evas_Object* explanation_ = nullptr;
};
