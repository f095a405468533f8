#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <Elementary.h>

#include "Companion/Model/Screen.h"
#include "Companion/View/FileListView.h"
#include "Companion/View/FocusFrame.h"
#include "Companion/View/Text.h"
#include "Companion/View/TimelineView.h"

namespace companion {

/// What the screen shows at a time.
struct Shown {
    std::shared_ptr<const Screen> screen{}; ///< null before the first check has ended
    std::string problem{};                  ///< why there is none
    bool enabled = false;                   ///< the sync-demo setting
    bool stillChecking = false;             ///< a check runs for longer than one would expect
    int second = 0;                         ///< of the day, now
};

/// All that is in the window, in the language of the process. Sizes follow the window's.
class ScreenView {
public:
    /// `onSwitch` is called with what the user wants the setting to be, `onClose` when they want to leave.
    ScreenView(Evas_Object* window, std::function<void(bool)> onSwitch, std::function<void()> onClose);
    ~ScreenView();

    ScreenView(const ScreenView&) = delete;
    ScreenView& operator=(const ScreenView&) = delete;

    void Show(Shown shown);

private:
    /// A card with a title and two texts.
    struct Card {
        Evas_Object* grid;
        Text title;
        Text main;
        Text detail;
    };

    Card AddCard(int left, int mainWidth);
    static void ShowCard(Card& card, const std::string& title, const std::string& main, const std::string& detail);
    void AddGroupLines();
    std::string ShowGroupLines(const Screen& screen);
    void AddSwitch();
    void AddCloseButton();

    void ShowHeader();
    void ShowCards();
    void ShowLists();
    void ShowFiles(const std::shared_ptr<const Screen>& screen);

    static void OnResize(void* data, Evas* canvas, Evas_Object* window, void* event);
    static void OnSwitched(void* data, Evas_Object* check, void* event);
    static void OnClose(void* data, Evas_Object* button, void* event);

    Evas_Object* window_;
    std::function<void(bool)> onSwitch_;
    std::function<void()> onClose_;

    Evas_Object* root_; ///< the rest is packed into it, or into a grid in it
    Evas_Object* header_;
    Text mark_, headline_, summary_, clock_, note_;
    Card setting_, now_, next_;
    Evas_Object* day_;
    Text dayTitle_;
    TimelineView timeline_;
    Evas_Object* fileSection_;
    Text fileTitle_;
    std::unique_ptr<FileListView> files_{}; ///< null until there are files
    Evas_Object* group_;
    Text groupTitle_;
    std::vector<std::pair<Text, Text>> groupLines_{}; ///< label and value
    Text hint_;
    Evas_Object* switch_ = nullptr;
    Evas_Object* close_ = nullptr;
    FocusFrame focus_;

    Shown shown_{};
};

} // namespace companion
