#include "Companion/View/TimelineView.h"

#include <algorithm>
#include <utility>

#include "Companion/Model/Language.h"
#include "Companion/Model/Wording.h"

namespace companion {

namespace {

using schedule::kDaySeconds;

constexpr int kHour = 60 * 60;
constexpr int kHoursBetweenLabels = 3;
constexpr int kLabelWidth = 3 * kHour - 600;

// From top to bottom.
constexpr int kGridHeight = 150;
constexpr int kNowTop = 0;
constexpr int kLabelHeight = 42;
constexpr int kPlayingTop = 44;
constexpr int kPlayingHeight = 62;
constexpr int kBarTop = 52;
constexpr int kBarHeight = 46;
constexpr int kTrackTop = 72;
constexpr int kTrackHeight = 6;
constexpr int kHoursTop = 108;

/// The width of a letter of the times, in seconds of the day. A bar that is narrower than its times does not show
/// them.
constexpr int kLetterWidth = 950;
/// The width of the card's title, which stands in the line of the mark's label, in seconds of the day.
constexpr int kTitleWidth = 2 * kHour;
constexpr int kMarkWidth = 200;
constexpr int kMarkHeight = 16;
constexpr int kMargin = 120; ///< between a bar and its neighbour

} // namespace

TimelineView::TimelineView(Evas_Object* parent) : grid_(AddGrid(parent, kDaySeconds, kGridHeight))
{
    Evas_Object* const track = AddRectangle(grid_, kTrack);
    elm_grid_pack(grid_, track, 0, kTrackTop, kDaySeconds, kTrackHeight);
}

void TimelineView::Show(const std::vector<schedule::Span>& periods, int second)
{
    for (Evas_Object* object : shown_) {
        evas_object_del(object);
    }
    shown_.clear();
    bool plays = false;
    for (const schedule::Span& span : periods) {
        ShowPeriod(span, span.Contains(second));
        plays = plays || span.Contains(second);
    }
    ShowHours();
    if (plays) { // the times of the period stay readable
        ShowMark(second, kLabelHeight, kMarkHeight);
        ShowMark(second, kHoursTop - kMarkHeight, kMarkHeight);
    } else {
        ShowMark(second, kLabelHeight, kHoursTop - kLabelHeight);
    }
    const int left = std::clamp(second - kLabelWidth / 2, kTitleWidth - kLabelWidth / 3, kDaySeconds - kLabelWidth);
    const Align align = second > kDaySeconds - kLabelWidth / 2 ? Align::kEnd : Align::kCenter;
    Text now(grid_, {kSmallText, kText, true, align}, {left, kNowTop, kLabelWidth, kLabelHeight});
    now.Set(Translated("Now"));
    shown_.push_back(now.Object());
}

void TimelineView::ShowMark(int second, int top, int height)
{
    for (const auto& [colour, width] : {std::pair(kBackground, 3 * kMarkWidth), std::pair(kText, kMarkWidth)}) {
        Evas_Object* const mark = AddRectangle(grid_, colour);
        elm_grid_pack(grid_, mark, std::clamp(second - width / 2, 0, kDaySeconds - width), top, width, height);
        shown_.push_back(mark);
    }
}

void TimelineView::ShowPeriod(const schedule::Span& span, bool playing)
{
    const int width = span.end - span.start;
    const int top = playing ? kPlayingTop : kBarTop;
    const int height = playing ? kPlayingHeight : kBarHeight;
    Evas_Object* const bar = AddRectangle(grid_, playing ? kPlaying : kPeriod);
    elm_grid_pack(grid_, bar, span.start, top, std::max(width - kMargin, kMargin), height);
    shown_.push_back(bar);
    const std::string words = SpanText(span);
    if (width < kLetterWidth * static_cast<int>(words.size())) {
        return;
    }
    Text times(grid_, {kSmallText, playing ? kOnPlaying : kText, playing, Align::kCenter, 0.5},
               {span.start, top, width, height});
    times.Set(words);
    shown_.push_back(times.Object());
}

void TimelineView::ShowHours()
{
    for (int second = 0; second <= kDaySeconds; second += kHoursBetweenLabels * kHour) {
        const bool first = second == 0;
        const bool last = second == kDaySeconds;
        const Align align = first ? Align::kStart : last ? Align::kEnd : Align::kCenter;
        const int left = first ? 0 : last ? kDaySeconds - kLabelWidth : second - kLabelWidth / 2;
        Text hour(grid_, {kSmallestText, kQuietText, false, align}, {left, kHoursTop, kLabelWidth, kLabelHeight});
        hour.Set(TimeOfDay(second));
        shown_.push_back(hour.Object());
    }
}

} // namespace companion
