#include "Companion/View/ScreenView.h"

#include <algorithm>
#include <utility>

#include "Companion/Model/Language.h"
#include "Companion/Model/Wording.h"

namespace companion {

namespace {

// The screen in units of a picture of 1920 by 1080. Nothing lies in the outer 5 %, which some TVs cut off.
constexpr int kWidth = 1920;
constexpr int kHeight = 1080;
constexpr int kLeft = 96;
constexpr int kRight = kWidth - 96;
constexpr int kTop = 54;
constexpr int kBottom = kHeight - 54;
constexpr int kGap = 20;
constexpr int kPadding = 24;

constexpr int kHeaderHeight = 148; ///< three lines of the smallest text, and the summary
constexpr int kCardsTop = kTop + kHeaderHeight + 14;
constexpr int kCardsHeight = 178;
constexpr int kCardWidth = (kRight - kLeft - 2 * kGap) / 3;
constexpr int kSecondCard = kLeft + kCardWidth + kGap;
constexpr int kThirdCard = kSecondCard + kCardWidth + kGap;
constexpr int kDayTop = kCardsTop + kCardsHeight + kGap;
constexpr int kDayHeight = 170;
constexpr int kListsTop = kDayTop + kDayHeight + kGap;
constexpr int kFooterHeight = 72;
constexpr int kListsHeight = kBottom - kFooterHeight - 10 - kListsTop;
constexpr int kListWidth = kThirdCard - kGap - kLeft;
constexpr int kTitleTop = 14;
constexpr int kTitleHeight = 42;
constexpr int kContentTop = kTitleTop + kTitleHeight + 2;

// Of the header.
constexpr int kMarkWidth = 64;
constexpr int kClockWidth = 300;
constexpr int kSummaryHeight = 42;

constexpr int kSwitchWidth = 272;
constexpr int kSwitchHeight = 64;
constexpr int kCloseWidth = 270;

constexpr int kGroupLabelWidth = 190;
constexpr int kGroupLineHeight = 39;
constexpr int kGroupHeight = kListsHeight - kContentTop - 8;
/// Longer values, in bytes, take two lines.
constexpr std::size_t kLongValue = 19;

constexpr TextStyle kTitleStyle = {kSmallText, kQuietText};

/// Texts of the toolkit's own widgets have a size of 10.
constexpr double kWidgetScale = 3.0;

/// Widgets in our colours; their shapes stay the toolkit's.
void ColourWidgets()
{
    const struct {
        const char* part;
        Colour colour;
    } parts[] = {
        {"/bg/normal/background", kBackground},  {"/bg/normal/button", kPeriod},
        {"/bg/pressed/button", kPeriod},         {"/fg/normal/button", kText},
        {"/fg/pressed/button", kText},           {"/bg/normal/toggle/base", kPeriod},
        {"/bg/pressed/toggle/base", kPeriod},    {"/fg/normal/toggle/button", kText},
        {"/fg/pressed/toggle/button", kText},    {"/fg/normal/toggle/text/on", kText},
        {"/fg/normal/toggle/text/off", kText},   {"/bg/normal/list/item", kCard},
        {"/bg-alt/normal/list/item", kOtherRow}, {"/bg/selected/list/item", kSelectedRow},
        {"/bg-alt/normal/list", kCard},          {"/fg/normal/scroller/bar/vertical", kTrack},
    };
    for (const auto& [part, colour] : parts) {
        edje_color_class_set(part, colour.red, colour.green, colour.blue, 255, 0, 0, 0, 0, 0, 0, 0, 0);
    }
    for (const char* const shadow : {"/shadow/normal/button", "/shadow/pressed/button"}) {
        edje_color_class_set(shadow, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0); // it reaches into the outer 5 %
    }
}

/// A place with units of its own, as large as in the picture.
Evas_Object* PutGrid(Evas_Object* parent, int left, int top, int width, int height)
{
    Evas_Object* const grid = AddGrid(parent, width, height);
    elm_grid_pack(parent, grid, left, top, width, height);
    return grid;
}

Evas_Object* PutCard(Evas_Object* parent, int left, int top, int width, int height)
{
    Evas_Object* const grid = PutGrid(parent, left, top, width, height);
    elm_grid_pack(grid, AddRectangle(grid, kCard), 0, 0, width, height);
    return grid;
}

Evas_Object* AddRoot(Evas_Object* window)
{
    ColourWidgets();
    Evas_Object* const root = AddGrid(window, kWidth, kHeight);
    evas_object_size_hint_weight_set(root, EVAS_HINT_EXPAND, EVAS_HINT_EXPAND);
    elm_win_resize_object_add(window, root);
    return root;
}

int LinesOf(const std::string& value)
{
    return value.size() > kLongValue ? 2 : 1;
}

void SetScale(Evas_Object* window)
{
    int height = 0;
    evas_object_geometry_get(window, nullptr, nullptr, nullptr, &height);
    if (height > 0) {
        elm_config_scale_set(kWidgetScale * height / kHeight);
    }
}

} // namespace

ScreenView::ScreenView(Evas_Object* window, std::function<void(bool)> onSwitch, std::function<void()> onClose)
    : window_(window),
      onSwitch_(std::move(onSwitch)),
      onClose_(std::move(onClose)),
      root_(AddRoot(window)),
      header_(PutGrid(root_, kLeft, kTop, kRight - kLeft, kHeaderHeight)),
      mark_(header_, {76, kText, true, Align::kStart, 0.5}, {0, 0, kMarkWidth, kHeaderHeight - kSummaryHeight}),
      headline_(
          header_, {44, kText, true, Align::kStart, 0.5},
          {kMarkWidth + 12, 2, kRight - kLeft - kMarkWidth - kClockWidth - 36, kHeaderHeight - kSummaryHeight - 4}),
      summary_(header_, {kSmallText, kQuietText},
               {kMarkWidth + 12, kHeaderHeight - kSummaryHeight, kRight - kLeft - kMarkWidth - kClockWidth - 36,
                kSummaryHeight}),
      clock_(header_, {60, kText, false, Align::kEnd, 0.5},
             {kRight - kLeft - kClockWidth, 0, kClockWidth, kHeaderHeight - kSummaryHeight}),
      note_(header_, {kSmallestText, kOdd, false, Align::kEnd},
            {kRight - kLeft - kClockWidth, kHeaderHeight - kSummaryHeight, kClockWidth, kSummaryHeight}),
      setting_(AddCard(kLeft, kCardWidth - 3 * kPadding - kSwitchWidth)),
      now_(AddCard(kSecondCard, kCardWidth - 2 * kPadding)),
      next_(AddCard(kThirdCard, kCardWidth - 2 * kPadding)),
      day_(PutCard(root_, kLeft, kDayTop, kRight - kLeft, kDayHeight)),
      dayTitle_(day_, kTitleStyle, {kPadding, kTitleTop, kCardWidth, kTitleHeight}),
      timeline_(day_),
      fileSection_(PutCard(root_, kLeft, kListsTop, kListWidth, kListsHeight)),
      fileTitle_(fileSection_, kTitleStyle, {kPadding, kTitleTop, kListWidth - 2 * kPadding, kTitleHeight}),
      group_(PutCard(root_, kThirdCard, kListsTop, kCardWidth, kListsHeight)),
      groupTitle_(group_, kTitleStyle, {kPadding, kTitleTop, kCardWidth - 2 * kPadding, kTitleHeight}),
      hint_(root_, {kSmallestText, kQuietText, false, Align::kStart, 0.5},
            {kLeft, kBottom - kFooterHeight, kListWidth, kFooterHeight}),
      focus_(window_)
{
    elm_grid_pack(day_, timeline_.Object(), kPadding, kDayHeight - 160, kRight - kLeft - 2 * kPadding, 150);
    AddGroupLines();
    AddSwitch();
    AddCloseButton();
    evas_object_event_callback_add(window_, EVAS_CALLBACK_RESIZE, OnResize, this);
    SetScale(window_);
}

ScreenView::~ScreenView()
{
    evas_object_event_callback_del_full(window_, EVAS_CALLBACK_RESIZE, OnResize, this);
    evas_object_smart_callback_del_full(switch_, "changed", OnSwitched, this);
    evas_object_smart_callback_del_full(close_, "clicked", OnClose, this);
}

ScreenView::Card ScreenView::AddCard(int left, int mainWidth)
{
    Evas_Object* const grid = PutCard(root_, left, kCardsTop, kCardWidth, kCardsHeight);
    const int width = kCardWidth - 2 * kPadding;
    return {grid, Text(grid, kTitleStyle, {kPadding, kTitleTop, mainWidth, kTitleHeight}),
            Text(grid, {40, kText, true}, {kPadding, kContentTop, mainWidth, 68}),
            Text(grid, {kSmallestText, kQuietText}, {kPadding, kContentTop + 70, width, 42})};
}

void ScreenView::AddGroupLines()
{
    for (std::size_t count = GroupLines(Screen()).size(); count > 0; --count) {
        groupLines_.emplace_back(Text(group_, {kSmallestText, kQuietText}, {}),
                                 Text(group_, {kSmallestText, kText}, {}));
    }
}

/// Creates the list when there are files to show. The first picture has none and appears sooner without it.
void ScreenView::ShowFiles(const std::shared_ptr<const Screen>& screen)
{
    if (files_ == nullptr && screen->files.empty()) {
        return;
    }
    if (files_ == nullptr) {
        files_ = std::make_unique<FileListView>(fileSection_);
        focus_.FollowRows(files_->Object());
        elm_grid_pack(fileSection_, files_->Object(), kPadding / 2, kContentTop, kListWidth - kPadding,
                      kListsHeight - kContentTop - kPadding / 2);
    }
    files_->Show(screen);
}

/// Returns what a screen reader says of them.
std::string ScreenView::ShowGroupLines(const Screen& screen)
{
    const auto lines = GroupLines(screen);
    int height = 0;
    for (const auto& [label, value] : lines) {
        height += LinesOf(value);
    }
    height = std::min(kGroupLineHeight, kGroupHeight / height);
    std::string read;
    int top = kContentTop;
    for (std::size_t index = 0; index < lines.size(); ++index) {
        const auto& [label, value] = lines[index];
        auto& [labelText, valueText] = groupLines_[index];
        const int left = kPadding + kGroupLabelWidth;
        labelText.Place({kPadding, top, kGroupLabelWidth, height});
        labelText.Set(label);
        valueText.Place({left, top, kCardWidth - kPadding - left, LinesOf(value) * height});
        valueText.Set(value);
        top += LinesOf(value) * height;
        read += ". " + label + ": " + value;
    }
    return read;
}

void ScreenView::AddSwitch()
{
    switch_ = elm_check_add(setting_.grid);
    elm_object_style_set(switch_, "toggle");
    evas_object_smart_callback_add(switch_, "changed", OnSwitched, this);
    elm_grid_pack(setting_.grid, switch_, kCardWidth - kPadding - kSwitchWidth, kContentTop - 6, kSwitchWidth,
                  kSwitchHeight);
    evas_object_show(switch_);
}

void ScreenView::AddCloseButton()
{
    close_ = elm_button_add(root_);
    evas_object_smart_callback_add(close_, "clicked", OnClose, this);
    // Inside the mark of the focus, which is drawn around it.
    elm_grid_pack(root_, close_, kRight - kCloseWidth + kFocusWidth, kBottom - kFooterHeight + kFocusWidth,
                  kCloseWidth - 2 * kFocusWidth, kFooterHeight - 2 * kFocusWidth);
    evas_object_show(close_);
    // Not the switch: who presses the tool key and Return by mistake must not switch the demo off.
    elm_object_focus_set(close_, EINA_TRUE);
}

void ScreenView::Show(Shown shown)
{
    shown_ = std::move(shown);
    ShowHeader();
    ShowCards();
    ShowLists();
}

void ScreenView::ShowHeader()
{
    const Screen* const screen = shown_.screen.get();
    std::string headline = Translated("Checking ...");
    std::string mark = "…";
    Colour colour = kQuietText;
    if (screen != nullptr) {
        headline = Headline(*screen);
        const bool ready = screen->outcome == readiness::Outcome::kAsMeant;
        const bool plays = ready || screen->outcome == readiness::Outcome::kNotAsMeant ||
                           screen->outcome == readiness::Outcome::kPerhapsNotMeant;
        mark = ready ? "✓" : plays ? "!" : "✗";
        colour = ready ? kGood : plays ? kOdd : kBad;
    } else if (!shown_.problem.empty()) {
        headline = shown_.problem;
        mark = "✗";
        colour = kBad;
    }
    mark_.Set(mark, colour);
    headline_.Set(headline);
    summary_.Set(screen != nullptr ? SummaryText(*screen) : "");
    clock_.Set(TimeOfDay(shown_.second));
    note_.Set(shown_.stillChecking ? Translated("still checking ...") : "");
    elm_object_access_info_set(header_, headline.c_str());
}

void ScreenView::ShowCard(Card& card, const std::string& title, const std::string& main, const std::string& detail)
{
    card.title.Set(title);
    card.main.Set(main);
    card.detail.Set(detail);
    elm_object_access_info_set(card.grid, (title + ": " + main + ". " + detail).c_str());
}

void ScreenView::ShowCards()
{
    const std::string state = shown_.enabled ? Translated("On") : Translated("Off");
    ShowCard(setting_, Translated("Sync demo"), state, SettingText(shown_.enabled));
    elm_object_part_text_set(switch_, "on", Translated("On"));
    elm_object_part_text_set(switch_, "off", Translated("Off"));
    elm_check_state_set(switch_, shown_.enabled ? EINA_TRUE : EINA_FALSE);
    elm_object_access_info_set(switch_, Translated("Sync demo"));

    const Screen* const screen = shown_.screen.get();
    const bool known = screen != nullptr && screen->haveSchedule;
    ShowCard(now_, Translated("Now"), known ? ProgrammeText(screen->now) : "–", known ? UntilText(*screen) : "");
    const bool changes = known && screen->next;
    ShowCard(next_, Translated("Next"), changes ? ProgrammeText(screen->next->then) : "–",
             changes ? WhenText(*screen) : "");
}

void ScreenView::ShowLists()
{
    static const auto empty = std::make_shared<const Screen>();
    const std::shared_ptr<const Screen>& screen = shown_.screen != nullptr ? shown_.screen : empty;
    dayTitle_.Set(Translated("Today"));
    timeline_.Show(screen->periods, shown_.second);
    elm_object_access_info_set(day_, Translated("Today"));

    const std::string files =
        std::string(Translated("Files")) + (screen->haveSchedule ? "   " + CompleteText(*screen) : "");
    fileTitle_.Set(files);
    ShowFiles(screen);
    if (files_ != nullptr) {
        elm_object_access_info_set(files_->Object(), files.c_str());
    }

    groupTitle_.Set(Translated("Group and network"));
    elm_object_access_info_set(group_, (Translated("Group and network") + ShowGroupLines(*screen)).c_str());

    hint_.Set(Translated("The Back key closes this window."));
    elm_object_text_set(close_, Translated("Close"));
    elm_object_access_info_set(close_, Translated("Close"));
}

void ScreenView::OnResize(void* data, Evas* /*canvas*/, Evas_Object* window, void* /*event*/)
{
    auto* const self = static_cast<ScreenView*>(data);
    SetScale(window);
    self->Show(self->shown_); // rows have a height in pixels
}

void ScreenView::OnSwitched(void* data, Evas_Object* check, void* /*event*/)
{
    static_cast<ScreenView*>(data)->onSwitch_(elm_check_state_get(check) != EINA_FALSE);
}

void ScreenView::OnClose(void* data, Evas_Object* /*button*/, void* /*event*/)
{
    static_cast<ScreenView*>(data)->onClose_();
}

} // namespace companion
