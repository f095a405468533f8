#include "Tests/VQMKeygrab/ApplicationTest.h"

#include <cstring>
#include <functional>
#include <memory>
#include <type_traits>
#include <vector>

#include <Ecore_X.h>

using recorder::Lines;
using recorder::Take;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace {

const recorder::LogOf kLog{"Quillmere", "VQMKeyGrab.cpp"};

} // namespace

Lines KeyGrab()
{
    Lines lines = {
        kLog.Debug("OrExclusiveGrabKeys", "CVQMKeyGrab::OrExclusiveGrabKeys - Start\n"),
        "Grab_InitKeys 1",
        "Grab_InitKeys 2",
    };
    for (int id = 0; id <= 192; ++id) {
        lines.push_back("Grab_AddKey 1 " + std::to_string(id) + " 0x80000");
    }
    lines.emplace_back("Grab_RegisterKeys display 77 1");
    for (const char* id : {"75", "76", "17", "10", "31", "26", "27", "28", "29", "30"}) {
        lines.push_back(std::string("Grab_AddKey 2 ") + id + " 0x80000");
    }
    lines.emplace_back("UnGrab_RegisterKeys display 77 2");
    lines.push_back(kLog.Debug("OrExclusiveGrabKeys", "CVQMKeyGrab::OrExclusiveGrabKeys - Finished\n"));
    return lines;
}

namespace {

/// The creation's steps up to the point where the keys are grabbed.
Lines CreationBeforeGrab()
{
    return {
        kLog.Debug("CreateWindow", "CVQMKeyGrab::CreateWindow \n"),
        "system_info_get_value_int 380",
        kLog.Debug("CreateWindow", "Device Info screen width get success: 1920\n"),
        "system_info_get_value_int 381",
        kLog.Debug("CreateWindow", "Device Info screen height get success: 1080\n"),
        "elm_win_add null VQMKeygrab 1",
        "elm_win_title_set window VQMKeygrab",
        "evas_object_evas_get window",
        "evas_object_rectangle_add canvas",
        "evas_object_color_set rectangle 0 0 0 0",
        "evas_object_render_op_set rectangle 2",
        "evas_object_resize rectangle 1920 1080",
        "evas_object_show rectangle",
        "evas_object_show window",
        "ecore_x_display_get",
        "elm_win_xwindow_get window",
        "evas_object_event_callback_add window 11 OnKeyReleaseCB",
    };
}

/// The first lines of a sequence, through the one that begins with `last`.
Lines Through(const Lines& lines, const std::string& last)
{
    Lines result;
    for (const std::string& line : lines) {
        result.push_back(line);
        if (line.rfind(last, 0) == 0) {
            return result;
        }
    }
    ADD_FAILURE() << "no line begins with " << last;
    return result;
}

} // namespace

Lines WindowCreation()
{
    Lines lines = CreationBeforeGrab();
    const Lines keys = KeyGrab();
    lines.insert(lines.end(), keys.begin(), keys.end());
    lines.push_back(kLog.Debug("CreateWindow", "CVQMKeyGrab::CreateWindow finish\n"));
    return lines;
}

Lines WindowDestruction()
{
    return {
        kLog.Debug("DestroyWindow", "DestroyWindow"),
        kLog.Debug("DestroyWindow", "event callback delete"),
        "evas_object_event_callback_del window 11 OnKeyReleaseCB",
        "evas_object_hide window",
        kLog.Debug("DestroyWindow", "m_background is not null"),
        "evas_object_hide rectangle",
        "evas_object_ref_get rectangle",
        "evas_object_del rectangle",
        kLog.Debug("DestroyWindow", "m_evas is not null"),
        kLog.Debug("DestroyWindow", "m_window is not null"),
        "evas_object_ref_get window",
        "evas_object_del window",
    };
}

class KeyGrabTest : public ApplicationTest {
protected:
    /// A key release as the toolkit delivers it: `keyname` names the physical key.
    static void Release(void* data, const char* key, const char* keyname = "")
    {
        Evas_Event_Key_Up event = {};
        event.key = key;
        event.keyname = const_cast<char*>(keyname);
        CVQMKeyGrab::OnKeyReleaseCB(data, nullptr, nullptr, &event);
    }
};

TEST_F(KeyGrabTest, ConstructionBuildsTheWindowAndGrabsTheKeys)
{
    const CVQMKeyGrab keyGrab;
    EXPECT_THAT(Take(), ElementsAreArray(WindowCreation()));
    EXPECT_EQ(application.keyUpData, &keyGrab);
}

TEST_F(KeyGrabTest, ListenerGetsTheDataThatTheCreationWasGiven)
{
    CVQMKeyGrab keyGrab;
    int data = 0;
    EXPECT_TRUE(keyGrab.CreateWindow(&data));
    EXPECT_EQ(application.keyUpData, &data);
}

TEST_F(KeyGrabTest, DestructionIsLoggedBeforeTheWindowGoes)
{
    auto keyGrab = std::make_unique<CVQMKeyGrab>();
    Take();
    keyGrab.reset();
    EXPECT_THAT(Take(),
                ElementsAreArray(Concatenated({{grab.Debug("~CVQMKeyGrab", "~CVQMKeyGrab")}, WindowDestruction()})));
}

TEST_F(KeyGrabTest, ObjectsWithReferencesGiveUpOneEach)
{
    application.references = 2;
    CVQMKeyGrab keyGrab;
    Take();
    keyGrab.DestroyWindow();
    EXPECT_THAT(Take(), ElementsAre(grab.Debug("DestroyWindow", "DestroyWindow"),
                                    grab.Debug("DestroyWindow", "event callback delete"),
                                    "evas_object_event_callback_del window 11 OnKeyReleaseCB",
                                    "evas_object_hide window", grab.Debug("DestroyWindow", "m_background is not null"),
                                    "evas_object_hide rectangle", "evas_object_ref_get rectangle",
                                    grab.Debug("DestroyWindow", "evas_object_unref(m_background)"),
                                    "evas_object_unref rectangle", "evas_object_del rectangle",
                                    grab.Debug("DestroyWindow", "m_evas is not null"),
                                    grab.Debug("DestroyWindow", "m_window is not null"), "evas_object_ref_get window",
                                    grab.Debug("DestroyWindow", "evas_object_unref(m_window)"),
                                    "evas_object_unref window", "evas_object_del window"));
}

/// One step of the creation fails: what was done until then, what is logged, and what destruction
/// finds to release.
struct FailedStep {
    const char* name;
    std::function<void(recording::Application&)> fail;
    std::string lastCall;
    Lines failureLines;
    Lines destruction;
};

void PrintTo(const FailedStep& step, std::ostream* out)
{
    *out << step.name;
}

class FailedCreation : public KeyGrabTest, public testing::WithParamInterface<FailedStep> {};

TEST_P(FailedCreation, StopsAtOnceAndLeavesTheRestToDestruction)
{
    const FailedStep& step = GetParam();
    step.fail(application);

    auto keyGrab = std::make_unique<CVQMKeyGrab>();
    EXPECT_THAT(Take(), ElementsAreArray(Concatenated({Through(CreationBeforeGrab(), step.lastCall),
                                                       step.failureLines,
                                                       {grab.Debug("CVQMKeyGrab", "failed to create window")}})));

    keyGrab->DestroyWindow();
    EXPECT_THAT(Take(), ElementsAreArray(step.destruction));

    keyGrab.reset();
    EXPECT_THAT(Take(),
                ElementsAre(grab.Debug("~CVQMKeyGrab", "~CVQMKeyGrab"), grab.Debug("DestroyWindow", "DestroyWindow")))
        << "the second destruction finds nothing left";
}

const Lines kNothingToDestroy = {kLog.Debug("DestroyWindow", "DestroyWindow")};
const Lines kOnlyWindowToDestroy = {
    kLog.Debug("DestroyWindow", "DestroyWindow"),
    kLog.Debug("DestroyWindow", "event callback delete"),
    "evas_object_event_callback_del window 11 OnKeyReleaseCB",
    "evas_object_hide window",
    kLog.Debug("DestroyWindow", "m_window is not null"),
    "evas_object_ref_get window",
    "evas_object_del window",
};
const Lines kWindowAndCanvasToDestroy = {
    kLog.Debug("DestroyWindow", "DestroyWindow"),
    kLog.Debug("DestroyWindow", "event callback delete"),
    "evas_object_event_callback_del window 11 OnKeyReleaseCB",
    "evas_object_hide window",
    kLog.Debug("DestroyWindow", "m_evas is not null"),
    kLog.Debug("DestroyWindow", "m_window is not null"),
    "evas_object_ref_get window",
    "evas_object_del window",
};

INSTANTIATE_TEST_SUITE_P(
    KeyGrab, FailedCreation,
    testing::Values(
        FailedStep{"ScreenWidth",
                   [](auto& app) { app.screenInfoResults[380] = -1; },
                   "system_info_get_value_int 380",
                   {kLog.Debug("CreateWindow", "CreateWindow : Unable to retrieve screen width\n")},
                   kNothingToDestroy},
        FailedStep{"ScreenWidthWithAPositiveResult",
                   [](auto& app) { app.screenInfoResults[380] = 1; },
                   "system_info_get_value_int 380",
                   {kLog.Debug("CreateWindow", "CreateWindow : Unable to retrieve screen width\n")},
                   kNothingToDestroy},
        FailedStep{"ScreenHeight",
                   [](auto& app) { app.screenInfoResults[381] = -2; },
                   "system_info_get_value_int 381",
                   {kLog.Debug("CreateWindow", "CreateWindow : Unable to retrieve screen height\n")},
                   kNothingToDestroy},
        FailedStep{"Window",
                   [](auto& app) { app.noWindow = true; },
                   "elm_win_add",
                   {kLog.Error("CreateWindow", "CVQMKeyGrab::CreateWindow - create elm window failed\n"),
                    kLog.Debug("CreateWindow", "CVQMKeyGrab::CreateWindow - create elm window failed\n")},
                   kNothingToDestroy},
        FailedStep{"Canvas",
                   [](auto& app) { app.noCanvas = true; },
                   "evas_object_evas_get",
                   {kLog.Debug("CreateWindow", "CVQMKeyGrab::CreateWindow - evas_object_evas_get failed\n")},
                   kOnlyWindowToDestroy},
        FailedStep{"Rectangle",
                   [](auto& app) { app.noRectangle = true; },
                   "evas_object_rectangle_add",
                   {kLog.Debug("CreateWindow", "CVQMKeyGrab::CreateWindow - evas_object_rectangle_add failed\n")},
                   kWindowAndCanvasToDestroy},
        FailedStep{"Display",
                   [](auto& app) { app.noDisplay = true; },
                   "ecore_x_display_get",
                   {kLog.Debug("CreateWindow", "CVQMKeyGrab::CreateWindow - disp is NULL\n")},
                   WindowDestruction()}),
    [](const auto& step) { return std::string(step.param.name); });

TEST_F(KeyGrabTest, FlagChangesNothingAboutTheGrab)
{
    for (const bool flag : {true, false}) {
        CVQMKeyGrab keyGrab;
        void* display = ecore_x_display_get();
        Take();
        keyGrab.OrExclusiveGrabKeys(display, 77, flag);
        EXPECT_THAT(Take(), ElementsAreArray(KeyGrab()));
    }
}

TEST_F(KeyGrabTest, WithoutADisplayNothingIsGrabbedAndTheErrorIsLoggedTwice)
{
    CVQMKeyGrab keyGrab;
    Take();
    keyGrab.OrExclusiveGrabKeys(nullptr, 77, true);
    EXPECT_THAT(
        Take(),
        ElementsAre(grab.Debug("OrExclusiveGrabKeys", "CVQMKeyGrab::OrExclusiveGrabKeys - Start\n"),
                    grab.Error("OrExclusiveGrabKeys", "CVQMKeyGrab::OrExclusiveGrabKeys - Display pointer is NULL\n"),
                    grab.Debug("OrExclusiveGrabKeys", "CVQMKeyGrab::OrExclusiveGrabKeys - Display pointer is NULL\n")));
}

TEST_F(KeyGrabTest, ToolKeyLaunchesTheCompanionWhileTheSettingIsOn)
{
    settings.integers["db/menu/syncdemo/state"] = 1;
    int data = 0;
    for (const char* key : {"XF86SimpleMenu", "XF86More"}) {
        for (const int result : {4711, 0, -1, -100}) {
            application.launchResult = result;
            Release(&data, key, "Menu");
            EXPECT_THAT(Take(),
                        ElementsAre(grab.Debug("OnKeyReleaseCB", "\n########################   TOOL KEY PRESSED   "
                                                                 "###########################\n"),
                                    "vconf_get_int db/menu/syncdemo/state",
                                    monitor.Debug("CheckSyncDemoEnbaled",
                                                  "CVQMSyncDemoMonitor::CheckSyncDemoEnbaled - Enabled \n"),
                                    "aul_launch_app " VQM_APP_ID ".gui null",
                                    grab.Debug("OnKeyReleaseCB", "result = " + std::to_string(result))));
        }
    }
}

TEST_F(KeyGrabTest, ToolKeyLaunchesNothingWhileTheSettingIsOff)
{
    int data = 0;
    for (const int state : {0, 2, -1, 11}) {
        settings.integers["db/menu/syncdemo/state"] = state;
        Release(&data, "XF86More");
        EXPECT_THAT(Take(), ElementsAre(grab.Debug("OnKeyReleaseCB", "\n########################   TOOL KEY PRESSED   "
                                                                     "###########################\n"),
                                        "vconf_get_int db/menu/syncdemo/state",
                                        monitor.Debug("CheckSyncDemoEnbaled",
                                                      "CVQMSyncDemoMonitor::CheckSyncDemoEnbaled - Disabled \n"),
                                        grab.Debug("OnKeyReleaseCB", "not used in vqm mode")));
    }
}

TEST_F(KeyGrabTest, OtherKeysAreSilent)
{
    settings.integers["db/menu/syncdemo/state"] = 1;
    int data = 0;
    for (const char* key : {"xf86simplemenu", "XF86MORE", "XF86Mor", "XF86MoreX", "XF86AudioPlay", "a", ""}) {
        Release(&data, key, "XF86More");
    }
    EXPECT_THAT(Take(), IsEmpty());
}

TEST_F(KeyGrabTest, ReleaseWithoutDataIsAnErrorAndReadsNoSetting)
{
    Release(nullptr, "XF86More");
    EXPECT_THAT(Take(), ElementsAre(grab.Error("OnKeyReleaseCB", "OnKeyReleaseCB -  data is null \n")));
}

TEST_F(KeyGrabTest, MembersStandInTheirFixedOrder)
{
    static_assert(std::is_polymorphic_v<CVQMKeyGrab> && std::has_virtual_destructor_v<CVQMKeyGrab>);
    static_assert(sizeof(CVQMKeyGrab) == 5 * sizeof(void*), "table, flag, window, background, canvas");
    static_assert(sizeof(CVQMKeyGrab::xinfo) == 12);

    const CVQMKeyGrab keyGrab;
    void* words[5];
    std::memcpy(words, static_cast<const void*>(&keyGrab), sizeof words);
    bool flag = true;
    std::memcpy(&flag, &words[1], sizeof flag);
    EXPECT_FALSE(flag);

    void* window = elm_win_add(nullptr, "", ELM_WIN_DIALOG_BASIC);
    void* canvas = evas_object_evas_get(nullptr);
    void* rectangle = evas_object_rectangle_add(nullptr);
    EXPECT_EQ(words[2], window);
    EXPECT_EQ(words[3], rectangle);
    EXPECT_EQ(words[4], canvas);
}

TEST_F(KeyGrabTest, ExportedBlockStartsAtZero)
{
    for (const unsigned char byte : CVQMKeyGrab::xinfo) {
        EXPECT_EQ(byte, 0);
    }
}
