#pragma once

#include <chrono>
#include <memory>

#include <Elementary.h>
#include <vconf.h>

#include "Companion/BackgroundCheck.h"
#include "Companion/View/ScreenView.h"
#include "Diagnostics/Watch/Settling.h"

/// The companion's window. It follows the setting, the menu language, the files that decide what plays, and
/// the clock.
///
/// Exists between the start of the toolkit and its end, on the main loop's thread. Closing it ends
/// the main loop.
class CompanionWindow {
public:
    /// Throws `std::runtime_error` when the system gives no watch of files.
    CompanionWindow();
    ~CompanionWindow();

    CompanionWindow(const CompanionWindow&) = delete;
    CompanionWindow& operator=(const CompanionWindow&) = delete;

    /// Shows the window, not minimised, above the others and with the focus.
    void Raise();

    /// Whether a check still runs, which may wait for a disk that does not answer: the process then has to
    /// be ended without its threads.
    bool IsChecking() const { return check_.IsRunning(); }

private:
    void Build();
    void Show();
    void StartCheck();
    void OnChecked(companion::Checked checked);
    void OnFilesChanged();
    void TakeLanguage();
    void Restart(Ecore_Timer*& timer, std::chrono::duration<double> delay, Ecore_Task_Cb action);

    static void OnSettingChanged(keynode_t* node, void* data);
    static void OnLanguageChanged(keynode_t* node, void* data);
    static Eina_Bool OnTime(void* data);
    static Eina_Bool OnSettled(void* data);
    static Eina_Bool OnPatienceOver(void* data);
    /// Input that the focused widget did not handle.
    static Eina_Bool OnInput(void* data, Evas_Object* object, Evas_Object* source, Evas_Callback_Type type,
                             void* event);

    Evas_Object* window_ = nullptr; ///< owns everything in it
    std::unique_ptr<companion::ScreenView> view_;
    companion::Shown shown_;
    Settling changes_;
    Ecore_Timer* time_ = nullptr;     ///< the next minute, or the next change of the programme
    Ecore_Timer* settling_ = nullptr; ///< until files that change come to rest
    Ecore_Timer* patience_ = nullptr; ///< until a check takes remarkably long
    companion::BackgroundCheck check_;
};
