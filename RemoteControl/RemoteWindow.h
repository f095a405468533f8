#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include <Elementary.h>
#include <vconf.h>

#include "RemoteControl/Button.h"
#include "RemoteControl/TvKeys.h"

struct RemoteOptions {
    std::string display; ///< the TV's
    std::string start;   ///< the command that starts the application; empty: no buttons to start and end it
    int x = -1;          ///< where to put the window, in pixels; negative: where the window manager wants it
    int y = -1;
};

/// The remote control's window. Its buttons press keys on the TV's display, switch the sync-demo setting, and
/// send popups by the session bus; the keyboard's keys press the buttons.
///
/// Exists between the start of the toolkit and its end, on the main loop's thread. Closing it ends the main
/// loop.
class RemoteWindow {
public:
    /// Throws `std::runtime_error` when the TV's display cannot be used.
    explicit RemoteWindow(const RemoteOptions& options);
    ~RemoteWindow();

    RemoteWindow(const RemoteWindow&) = delete;
    RemoteWindow& operator=(const RemoteWindow&) = delete;

private:
    void Build();
    void AddFooter(Evas* canvas, int windowHeight);
    void AddKeys();
    void AddActions();
    void AddAction(const Place& place, const char* caption, const char* hint, const char* hostKey,
                   std::function<std::string()> action);
    void ShowState(const TvState& state);
    void ShowSetting();
    void Say(const std::string& sentence);

    static void OnSettingChanged(keynode_t* node, void* data);
    static Eina_Bool OnKeyDown(void* data, int type, void* event);

    RemoteOptions options_;
    pid_t application_ = 0;
    Evas_Object* window_ = nullptr; ///< owns everything in it
    Evas_Object* headline_ = nullptr;
    Evas_Object* footer_ = nullptr;
    Ecore_Event_Handler* keyHandler_ = nullptr;
    std::map<std::string, std::unique_ptr<Button>> buttons_; ///< by keysym or caption
    std::map<std::string, Button*, std::less<>> byHostKey_;
    std::string said_; ///< the last sentence that came from the TV
    std::unique_ptr<TvKeys> tv_;
};
