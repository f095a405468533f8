#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

#include <Ecore_X.h>
#include <Efreet.h>
#include <Elementary.h>
#include <gmock/gmock.h>

#include "Companion/Model/Language.h"
#include "Companion/View/ScreenView.h"
#include "Tests/Companion/Pixels.h"
#include "Tests/Desktop/XServer.h"
#include "Tests/Support/RecordingSettings.h"

namespace companion {

namespace {

constexpr int kHour = 60 * 60;

std::shared_ptr<const Screen> ReadyScreen()
{
    auto screen = std::make_shared<Screen>();
    screen->outcome = readiness::Outcome::kAsMeant;
    screen->summary = "it will play what was meant; 3 of 3 items complete";
    screen->haveSchedule = true;
    screen->periods = {{9 * kHour, 18 * kHour + 1800}, {18 * kHour + 1800, 22 * kHour}};
    screen->now = {{"intro.mp4", "logo.jpg"}, 2, std::nullopt};
    screen->next = Change{9 * kHour, true, {{"evening.mp4"}, 1, std::nullopt}};
    screen->files = {{"intro.mp4", 1048576, true}, {"logo.jpg", 1053696, true}, {"evening.mp4", 1073740800, true}};
    screen->fileCount = screen->completeFiles = 3;
    screen->group = {true,
                     2,
                     "192.168.100.110",
                     "192.168.100.110",
                     "255.255.255.0",
                     "192.168.100.101",
                     "A group with a name of 32 letters"};
    return screen;
}

std::shared_ptr<const Screen> FaultyScreen()
{
    auto screen = std::make_shared<Screen>(*ReadyScreen());
    screen->outcome = readiness::Outcome::kPlaysNothing;
    screen->obstacle = "'logo.jpg' is missing; the schedule announces 1053696 bytes; "
                       "'LOGO.JPG' is there, but upper and lower case count";
    screen->summary = "it will not play; 1 of 3 items complete; the TV looks no further than 'logo.jpg'";
    screen->files = {{"logo.jpg", 1053696, false, screen->obstacle},
                     {"autumn_collection_2026_store_front_4K_HDR_final_version_approved.mp4", 1048576, true}};
    screen->fileCount = 3; // the rest is counted in a row
    screen->completeFiles = 1;
    return screen;
}

std::shared_ptr<const Screen> BrokenScreen()
{
    auto screen = std::make_shared<Screen>();
    screen->outcome = readiness::Outcome::kPlaysNothing;
    screen->obstacle = "the schedule '/opt/usr/apps/org.quillmere.vqmkeygrab/RECH/schedule.xml' cannot be parsed: "
                       "line 6, column 60: the document ends in the middle, inside what begins here; copy it again";
    screen->summary = "it will not play: there is no readable schedule";
    return screen;
}

Eina_Rectangle PlaceOf(Evas_Object* object)
{
    Eina_Rectangle place = {};
    evas_object_geometry_get(object, &place.x, &place.y, &place.w, &place.h);
    return place;
}

bool IsIn(const Eina_Rectangle& inner, const Eina_Rectangle& outer)
{
    return inner.x >= outer.x && inner.y >= outer.y && inner.x + inner.w <= outer.x + outer.w &&
           inner.y + inner.h <= outer.y + outer.h;
}

/// `object` and what it consists of.
void Collect(Evas_Object* object, std::vector<Evas_Object*>& all)
{
    all.push_back(object);
    const std::string type = evas_object_type_get(object);
    if (type == "rectangle" || type == "textblock" || type == "text" || type == "image") {
        return; // asked for members, a simple object complains
    }
    Eina_List* members = evas_object_smart_members_get(object);
    while (members != nullptr) {
        Collect(static_cast<Evas_Object*>(eina_list_data_get(members)), all);
        members = eina_list_remove_list(members, members);
    }
}

struct Size {
    int width;
    int height;
};

constexpr const char* kLanguages[] = {"en_US.UTF-8", "de_DE.UTF-8", "ar_AE.UTF-8"};
constexpr Size kSizes[] = {{1280, 720}, {1920, 1080}, {3840, 2160}};

/// A window with the companion's screen in it.
class Window {
public:
    explicit Window(const Size& size) : size_(size), window_(elm_win_util_standard_add("view", "view"))
    {
        elm_win_override_set(window_, EINA_TRUE); // no window manager maps it
        evas_object_resize(window_, size.width, size.height);
        view_ = std::make_unique<ScreenView>(
            window_, [](bool) {}, [] {});
        evas_object_show(window_);
        ecore_x_window_focus(elm_win_xwindow_get(window_));
    }

    ~Window()
    {
        view_.reset();
        evas_object_del(window_);
    }

    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    /// Returns once all of it is drawn, in the window that has the focus.
    Pixels Show(const std::shared_ptr<const Screen>& screen)
    {
        view_->Show({screen, "", true, true, 11 * kHour});
        return Picture([this](const Pixels& pixels) {
            const std::vector<Evas_Object*> texts = Texts();
            return elm_win_focus_get(window_) != EINA_FALSE &&
                   std::all_of(texts.begin(), texts.end(),
                               [&pixels](Evas_Object* text) { return pixels.Contrast(PlaceOf(text)) > 1.1; });
        });
    }

    /// The first picture that is complete. After some patience, the picture as it is.
    Pixels Picture(const std::function<bool(const Pixels&)>& isComplete)
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        for (;;) {
            for (int round = 0; round < 10; ++round) { // what the toolkit has put off
                ecore_main_loop_iterate_may_block(EINA_FALSE);
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
            }
            evas_render(evas_object_evas_get(window_));
            ecore_x_sync();
            Pixels pixels(elm_win_xwindow_get(window_), size_.width, size_.height);
            if (isComplete(pixels) || std::chrono::steady_clock::now() > end) {
                return pixels;
            }
        }
    }

    std::vector<Evas_Object*> Objects() const
    {
        std::vector<Evas_Object*> all;
        Evas_Object* object = evas_object_bottom_get(evas_object_evas_get(window_));
        for (; object != nullptr; object = evas_object_above_get(object)) {
            Collect(object, all);
        }
        return all;
    }

    /// What takes the focus itself; a container hands it on to what is in it.
    std::vector<Evas_Object*> Focusable() const
    {
        std::vector<Evas_Object*> found;
        for (Evas_Object* object : Objects()) {
            if (object != window_ && elm_object_widget_check(object) != EINA_FALSE) {
                elm_object_focus_set(object, EINA_TRUE);
                if (elm_object_focused_object_get(window_) == object) {
                    found.push_back(object);
                }
            }
        }
        return found;
    }

    /// The texts that can be read in full, unlike those of a row that the list cuts off.
    std::vector<Evas_Object*> Texts() const
    {
        std::vector<Evas_Object*> texts;
        for (Evas_Object* object : Objects()) {
            const bool isText = std::strcmp(evas_object_type_get(object), "textblock") == 0;
            const char* const text = isText ? evas_object_textblock_text_markup_get(object) : nullptr;
            // The toolkit's own texts have a theme's style.
            const bool isOurs = text != nullptr && evas_object_textblock_style_get(object) != nullptr;
            if (isOurs && *text != '\0' && IsWhole(object)) {
                texts.push_back(object);
            }
        }
        return texts;
    }

private:
    static bool IsWhole(Evas_Object* object)
    {
        const Eina_Rectangle place = PlaceOf(object);
        for (; object != nullptr; object = evas_object_clip_get(object)) {
            if (evas_object_visible_get(object) == EINA_FALSE || !IsIn(place, PlaceOf(object))) {
                return false;
            }
        }
        return place.w > 1;
    }

    Size size_;
    Evas_Object* window_;
    std::unique_ptr<ScreenView> view_{};
};

/// 28 pixels on a screen of 1080 lines, in full, and within the part of the screen that every TV shows.
void ExpectReadable(Evas_Object* text, const Pixels& pixels)
{
    const std::string says = evas_object_textblock_text_markup_get(text);
    const std::string style = evas_textblock_style_get(evas_object_textblock_style_get(text));
    EXPECT_EQ(style.find("ellipsis"), std::string::npos) << says;
    const std::size_t size = style.find("font_size=");
    ASSERT_NE(size, std::string::npos) << says << style;
    const int fontSize = std::atoi(style.c_str() + size + std::strlen("font_size="));
    EXPECT_GE(fontSize * evas_object_scale_get(text), 27.99 * pixels.Height() / 1080) << says;
    EXPECT_GE(pixels.Contrast(PlaceOf(text)), 4.5) << says;
}

int FrameWidth(const Pixels& pixels)
{
    return kFocusWidth * pixels.Height() / kLines;
}

/// What the frame of the focus is the edge of: a row, or a widget and the frame around it.
Eina_Rectangle FramedPlace(Evas_Object* widget, const Elm_Object_Item* row, int frameWidth)
{
    if (row != nullptr) {
        return PlaceOf(elm_object_item_part_content_get(row, "elm.swallow.content"));
    }
    const Eina_Rectangle place = PlaceOf(widget);
    return {place.x - frameWidth, place.y - frameWidth, place.w + 2 * frameWidth, place.h + 2 * frameWidth};
}

/// Whether the edge of `place` is a frame that stands out on all four sides from what is inside and outside of it.
bool HasFrame(const Eina_Rectangle& place, const Pixels& pixels)
{
    const int width = FrameWidth(pixels);
    const int right = place.x + place.w - 1;
    const int bottom = place.y + place.h - 1;
    const struct {
        int x, y, inwardX, inwardY;
    } sides[] = {{place.x + place.w / 2, place.y, 0, 1},
                 {place.x + place.w / 2, bottom, 0, -1},
                 {place.x, place.y + place.h / 2, 1, 0},
                 {right, place.y + place.h / 2, -1, 0}};
    return std::all_of(std::begin(sides), std::end(sides), [&](const auto& side) {
        const auto at = [&](int depth) {
            return pixels.At(side.x + depth * side.inwardX, side.y + depth * side.inwardY);
        };
        const std::uint32_t frame = at(width / 2);
        return Pixels::Contrast(frame, at(-2)) >= 3 && Pixels::Contrast(frame, at(width + 2)) >= 3;
    });
}

void Speak(const char* language)
{
    recording::settings() = {};
    recording::settings().texts[kLanguageKey] = language;
    FollowMenuLanguage();
    elm_config_mirrored_set(IsRightToLeft() ? EINA_TRUE : EINA_FALSE);
}

void ExpectReadable(const Size& size)
{
    Window window(size);
    for (const auto& screen : {ReadyScreen(), FaultyScreen(), BrokenScreen()}) {
        testing::Message trace;
        SCOPED_TRACE(trace << size.width << " " << screen->summary);
        const Pixels pixels = window.Show(screen);
        const std::vector<Evas_Object*> texts = window.Texts();
        EXPECT_GT(texts.size(), 30U);
        for (Evas_Object* text : texts) {
            ExpectReadable(text, pixels);
        }
        EXPECT_EQ(pixels.DrawnInMargin(), 0);
    }
}

TEST(CompanionView, EveryTextIsWholeLargeAndStandsOutAndTheOuterFivePercentAreEmpty)
{
    for (const char* const language : kLanguages) {
        SCOPED_TRACE(language);
        Speak(language);
        for (const Size& size : kSizes) {
            ExpectReadable(size);
        }
    }
}

TEST(CompanionView, WhatTakesTheFocusHasAName)
{
    for (const char* const language : kLanguages) {
        SCOPED_TRACE(language);
        Speak(language);
        Window window(kSizes[0]);
        window.Show(ReadyScreen());
        const std::vector<Evas_Object*> all = window.Focusable();
        EXPECT_EQ(all.size(), 3U); // the switch, the list, the button
        for (Evas_Object* object : all) {
            const char* const name = elm_object_access_info_get(object);
            EXPECT_TRUE(name != nullptr && *name != '\0') << elm_object_widget_type_get(object);
        }
    }
}

/// The widgets that take the focus, and instead of a list each of its rows.
std::vector<std::pair<Evas_Object*, Elm_Object_Item*>> FocusStops(const Window& window)
{
    std::vector<std::pair<Evas_Object*, Elm_Object_Item*>> stops;
    for (Evas_Object* widget : window.Focusable()) {
        elm_object_focus_set(widget, EINA_TRUE);
        if (elm_object_focused_item_get(widget) == nullptr) {
            stops.emplace_back(widget, nullptr);
            continue;
        }
        for (Elm_Object_Item* row = elm_genlist_first_item_get(widget); row != nullptr;
             row = elm_genlist_item_next_get(row)) {
            stops.emplace_back(widget, row);
        }
    }
    return stops;
}

TEST(CompanionView, FrameOfTheFocusStandsOutOnAllSidesAndMovesFromRowToRowAndToTheSwitch)
{
    for (const char* const language : {kLanguages[0], kLanguages[2]}) { // from both sides
        SCOPED_TRACE(language);
        Speak(language);
        Window window(kSizes[0]);
        const int frameWidth = FrameWidth(window.Show(ReadyScreen()));
        const auto stops = FocusStops(window);
        EXPECT_EQ(stops.size(), 5U); // the switch, three rows, the button
        Eina_Rectangle before = {};
        for (const auto& [widget, row] : stops) {
            elm_object_focus_set(widget, EINA_TRUE);
            if (row != nullptr) {
                elm_object_item_focus_set(row, EINA_TRUE);
            }
            const Eina_Rectangle place = FramedPlace(widget, row, frameWidth);
            const Pixels pixels = window.Picture([&](const Pixels& each) { return HasFrame(place, each); });
            EXPECT_TRUE(HasFrame(place, pixels)) << elm_object_widget_type_get(widget) << " at " << place.y;
            if (before.w > 0) {
                EXPECT_FALSE(HasFrame(before, pixels)) << "left behind at " << before.y;
            }
            before = place;
        }
    }
}

} // namespace

} // namespace companion

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    if (GTEST_FLAG_GET(list_tests)) {
        return RUN_ALL_TESTS();
    }
    const XServer server("3840x2160x24");
    const std::string home = std::filesystem::temp_directory_path() / ("view" + std::to_string(getpid()));
    std::filesystem::create_directories(home);
    for (const char* const name : {"HOME", "XDG_RUNTIME_DIR", "XDG_CONFIG_HOME"}) {
        setenv(name, home.c_str(), 1);
    }
    setenv("DISPLAY", server.Name().c_str(), 1);
    setenv("ECORE_NO_SYSTEM_MODULES", "1", 0);
    setenv("LOCPATH", VQM_TEST_LOCALES, 1);
    unsetenv("LC_ALL");
    setenv("LC_MESSAGES", "xx_XX.UTF-8", 1);
    efreet_cache_disable();
    elm_init(argc, argv);
    const int result = RUN_ALL_TESTS();
    elm_shutdown();
    std::filesystem::remove_all(home);
    return result;
}
