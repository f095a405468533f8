#pragma once

#include <Elementary.h>
#include <vconf.h>

/// The companion's window: what the sync demo is, whether it is on now, and a button to close it.
///
/// Exists between the start of the toolkit and its end, on the main loop's thread. Closing it ends
/// the main loop.
class SyncDemoWindow {
public:
    SyncDemoWindow();
    ~SyncDemoWindow();

    SyncDemoWindow(const SyncDemoWindow&) = delete;
    SyncDemoWindow& operator=(const SyncDemoWindow&) = delete;

    /// Shows the window, not minimised, above the others and with the focus.
    void Raise();

private:
    void Build();
    void ShowState(bool enabled);

    static void OnSettingChanged(keynode_t* node, void* data);
    /// Input that the focused widget did not handle.
    static Eina_Bool OnInput(void* data, Evas_Object* object, Evas_Object* source, Evas_Callback_Type type,
                             void* event);

    Evas_Object* window_ = nullptr; ///< owns everything in it
    Evas_Object* state_ = nullptr;
    Evas_Object* explanation_ = nullptr;
};
