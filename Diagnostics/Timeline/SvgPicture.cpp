#include "Diagnostics/Timeline/Render.h"

#include <algorithm>

#include "Diagnostics/Programme/ProgrammeText.h"
#include "Diagnostics/Text/TerminalText.h"
#include "Diagnostics/Text/Words.h"
#include "Diagnostics/Timeline/SvgText.h"

namespace timeline {

namespace {

using schedule::kDaySeconds;
using schedule::Span;
using svg::Anchor;
using svg::Box;
using svg::Length;
using svg::Pixels;

constexpr std::size_t kMostRows = 200;
constexpr std::size_t kMostLines = 12;
constexpr std::size_t kMostFiles = 20;

// A landscape A4 page with 96 pixels an inch is 1123 pixels wide and 794 high.

constexpr Length kMargin = Pixels(34);
constexpr Length kHourWidth = Pixels(44);
constexpr Length kDayWidth = 24 * kHourWidth;
constexpr Length kPageWidth = kDayWidth + 2 * kMargin;
constexpr Length kTop = Pixels(116); ///< of the rows
constexpr Length kRowHeight = Pixels(56);
constexpr Length kBarHeight = Pixels(24);
constexpr Length kLineHeight = Pixels(18);
/// What a character of a row's words is reckoned to take, a little more than an average letter.
constexpr Length kColumnWidth = 720;

constexpr char kDefinitions[] = R"(<defs>
<pattern id="timeline-gap" width="8" height="8" patternUnits="userSpaceOnUse">
<path d="M-2 10L10 -2M-2 2L2 -2M6 10L10 6" stroke="#c4c4c4" stroke-width="1"/></pattern>
<pattern id="timeline-overlap" width="8" height="8" patternUnits="userSpaceOnUse">
<path d="M-2 -2L10 10M6 -2L10 2M-2 6L2 10" stroke="#7a1f00" stroke-width="2"/></pattern>
</defs>
)";
constexpr char kGapLook[] = "fill=\"url(#timeline-gap)\"";
constexpr char kOverlapLook[] = "fill=\"url(#timeline-overlap)\"";
constexpr char kOverlapShade[] = "fill=\"#f7dccf\"";
constexpr char kBarLook[] = "fill=\"#9cc3e6\" stroke=\"#1f4e79\"";
constexpr char kNoFilesLook[] = "fill=\"#ffffff\" stroke=\"#1f4e79\" stroke-dasharray=\"4 3\"";
constexpr char kSmall[] = "font-size=\"12\"";

Length PlaceOf(int second)
{
    return kMargin + second * kDayWidth / kDaySeconds;
}

/// A diamond, which stands for no time at all.
std::string Diamond(Length x, Length y)
{
    return "<path d=\"M" + svg::Number(x) + " " + svg::Number(y - Pixels(9)) +
           "l9 9l-9 9l-9 -9z\" fill=\"#ffffff\" stroke=\"#a40000\" stroke-width=\"2\"/>\n";
}

std::string Words(const DayPeriod& each)
{
    return schedule::DescribeTimes(*each.period) + "; " + FilesText(*each.period, kMostFiles);
}

class Picture {
public:
    explicit Picture(const Timeline& timeline)
        : timeline_(timeline),
          shown_(std::min(timeline.periods.size(), kMostRows)),
          bottom_(kTop + static_cast<Length>(std::max<std::size_t>(shown_, 1)) * kRowHeight)
    {
    }

    std::string Render() const
    {
        const std::vector<std::string> words = List();
        const Length height = bottom_ + Pixels(30) + static_cast<Length>(words.size()) * kLineHeight;
        std::string text = Head(height, words);
        text += svg::Rectangle({0, 0, kPageWidth, height}, "fill=\"#ffffff\"");
        text += svg::Line(kMargin, Pixels(40), Anchor::kStart, CutForTerminal(EscapedForTerminal(Title(timeline_)), 80),
                          "font-size=\"20\" font-weight=\"bold\"");
        text += Legend() + Gaps(kGapLook) + Overlaps(kOverlapShade) + Hours();
        for (std::size_t index = 0; index < shown_; ++index) {
            text += Row(timeline_.periods[index], TopOf(index));
        }
        // Words stay readable: only the bars are hatched.
        text += "<clipPath id=\"timeline-bars\">\n" + Bars() + "</clipPath>\n<g clip-path=\"url(#timeline-bars)\">\n" +
                Overlaps(kOverlapLook) + "</g>\n" + Now();
        Length y = bottom_ + Pixels(22);
        for (const std::string& each : words) {
            text += svg::Line(kMargin, y, Anchor::kStart, CutForTerminal(EscapedForTerminal(each), 140), kSmall);
            y += kLineHeight;
        }
        return text + "</svg>\n";
    }

private:
    std::string Head(Length height, const std::vector<std::string>& words) const;
    std::string Legend() const;
    std::string Hours() const;
    static Length TopOf(std::size_t row) { return kTop + static_cast<Length>(row) * kRowHeight; }
    static Box BarOf(const DayPeriod& each, Length top);
    static std::string Row(const DayPeriod& each, Length top);
    std::string Bars() const;
    std::string Now() const;
    std::vector<std::string> List() const;

    std::string Gaps(const char* look) const
    {
        return Bands(
            timeline_.gaps, [](const Span& gap) { return gap; }, look);
    }

    std::string Overlaps(const char* look) const
    {
        return Bands(
            timeline_.overlaps, [](const Stretch& overlap) { return overlap.span; }, look);
    }

    /// Marks times over the whole height. Those that cannot be told apart become one.
    template <typename Stretches, typename SpanOf>
    std::string Bands(const Stretches& stretches, SpanOf spanOf, const char* look) const
    {
        constexpr Length kSmallest = 25; // a quarter of a pixel
        std::string text;
        Box band = {0, kTop, 0, bottom_ - kTop};
        const auto add = [&] { text += band.width > 0 ? svg::Rectangle(band, look) : ""; };
        for (const auto& stretch : stretches) {
            const Span span = spanOf(stretch);
            const Length start = PlaceOf(span.start);
            const Length end = std::max(PlaceOf(span.end), start + kSmallest);
            if (band.width == 0 || start > band.x + band.width + kSmallest) {
                add();
                band.x = start;
            }
            band.width = end - band.x;
        }
        add();
        return text;
    }

    const Timeline& timeline_;
    std::size_t shown_;
    Length bottom_; ///< of the rows
};

/// The beginning of the document, with the picture in words for those who cannot see it.
std::string Picture::Head(Length height, const std::vector<std::string>& words) const
{
    std::string description;
    for (std::size_t index = 0; index < shown_; ++index) {
        const DayPeriod& each = timeline_.periods[index];
        description += "Period " + std::to_string(each.number) + ": " + Words(each) + ". ";
    }
    for (const std::string& each : words) {
        description += each + ". ";
    }
    if (!description.empty()) {
        description.pop_back();
    }
    const std::string width = svg::Number(kPageWidth);
    const std::string tall = svg::Number(height);
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<svg xmlns=\"http://www.w3.org/2000/svg\" version=\"1.1\" width=\"" +
           width + "\" height=\"" + tall + "\" viewBox=\"0 0 " + width + " " + tall +
           "\" role=\"img\" aria-labelledby=\"timeline-title timeline-desc\" xml:lang=\"en\""
           " font-family=\"DejaVu Sans, Verdana, Arial, sans-serif\" font-size=\"13\" fill=\"#111111\">\n" +
           svg::Element("title", Title(timeline_), "id=\"timeline-title\"") +
           svg::Element("desc", description, "id=\"timeline-desc\"") + kDefinitions;
}

std::string Picture::Legend() const
{
    std::string text;
    Length x = kMargin;
    const auto add = [&](const std::string& sample, const char* meaning, Length width) {
        text += sample + svg::Line(x + Pixels(32), Pixels(68), Anchor::kStart, meaning, kSmall);
        x += width;
    };
    const auto box = [&](const char* look) { return svg::Rectangle({x, Pixels(57), Pixels(26), Pixels(13)}, look); };
    const auto any = [&](auto matches) {
        return std::any_of(timeline_.periods.begin(), timeline_.periods.end(), matches);
    };
    const auto plays = [](const DayPeriod& each) { return !each.span.IsEmpty(); };
    const auto hasFiles = [](const DayPeriod& each) { return !each.period->listContents.empty(); };
    if (any([&](const DayPeriod& each) { return plays(each) && hasFiles(each); })) {
        add(box(kBarLook), "plays", Pixels(90));
    }
    if (any([&](const DayPeriod& each) { return plays(each) && !hasFiles(each); })) {
        add(box(kNoFilesLook), "plays no file", Pixels(140));
    }
    if (!timeline_.overlaps.empty()) {
        add(box(kOverlapLook), "periods overlap", Pixels(155));
    }
    if (!timeline_.gaps.empty()) {
        add(box(kGapLook), "no period", Pixels(120));
    }
    if (any([&](const DayPeriod& each) { return !plays(each); })) {
        add(Diamond(x + Pixels(13), Pixels(63)), "never plays", Pixels(130));
    }
    return text;
}

std::string Picture::Hours() const
{
    std::string lines;
    std::string names;
    for (int hour = 0; hour <= 24; ++hour) {
        const Length x = kMargin + hour * kHourWidth;
        lines += "M" + svg::Number(x) + " " + svg::Number(kTop - Pixels(6)) + "V" + svg::Number(bottom_);
        if (hour % 2 == 0) {
            names += svg::Line(x, kTop - Pixels(12), Anchor::kMiddle, TwoDigits(hour) + ":00", kSmall);
        }
    }
    return "<path d=\"" + lines + "\" stroke=\"#d0d0d0\"/>\n" + names;
}

Box Picture::BarOf(const DayPeriod& each, Length top)
{
    const Length start = PlaceOf(each.span.start);
    return {start, top + Pixels(6), std::max(PlaceOf(each.span.end) - start, Pixels(1)), kBarHeight};
}

std::string Picture::Bars() const
{
    std::string bars;
    for (std::size_t index = 0; index < shown_; ++index) {
        const DayPeriod& each = timeline_.periods[index];
        bars += each.span.IsEmpty() ? "" : svg::Rectangle(BarOf(each, TopOf(index)), "");
    }
    return bars;
}

/// A period: its bar, and the words under it from the side that has more room.
std::string Picture::Row(const DayPeriod& each, Length top)
{
    const Length start = PlaceOf(each.span.start);
    const Length end = each.span.IsEmpty() ? start : PlaceOf(each.span.end);
    const bool fromLeft = start - kMargin <= kMargin + kDayWidth - end;
    const Length room = fromLeft ? kMargin + kDayWidth - start : end - kMargin;
    const std::string words = std::to_string(each.number) + ": " + Words(each);
    const auto columns = static_cast<std::size_t>(room / kColumnWidth);
    std::string text = "<g>\n" + svg::Element("title", words);
    if (each.span.IsEmpty()) {
        text += Diamond(start, top + Pixels(6) + kBarHeight / 2);
    } else {
        text += svg::Rectangle(BarOf(each, top), each.period->listContents.empty() ? kNoFilesLook : kBarLook);
    }
    text +=
        svg::Line(fromLeft ? start : end, top + Pixels(6) + kBarHeight + Pixels(15),
                  fromLeft ? Anchor::kStart : Anchor::kEnd, CutForTerminal(EscapedForTerminal(words), columns), kSmall);
    return text + "</g>\n";
}

std::string Picture::Now() const
{
    if (!timeline_.now) {
        return "";
    }
    const std::string x = svg::Number(PlaceOf(*timeline_.now));
    const bool early = *timeline_.now < kDaySeconds / 2;
    return "<path d=\"M" + x + " " + svg::Number(kTop - Pixels(28)) + "V" + svg::Number(bottom_) +
           "\" stroke=\"#a40000\" stroke-width=\"2\"/>\n" +
           svg::Line(PlaceOf(*timeline_.now) + Pixels(early ? 5 : -5), kTop - Pixels(26),
                     early ? Anchor::kStart : Anchor::kEnd, "now " + schedule::TimeText(*timeline_.now),
                     "font-size=\"12\" fill=\"#a40000\"");
}

/// What the picture shows, to the second.
std::vector<std::string> Picture::List() const
{
    std::vector<std::string> words;
    if (shown_ < timeline_.periods.size()) {
        words.push_back("and " + Counted(timeline_.periods.size() - shown_, "further period"));
    }
    const auto add = [&words](const std::string& what, const auto& stretches, auto describe) {
        std::size_t index = 0;
        for (; index < std::min(stretches.size(), kMostLines); ++index) {
            words.push_back(what + " " + describe(stretches[index]));
        }
        if (index < stretches.size()) {
            words.push_back(what + " and " + std::to_string(stretches.size() - index) + " more");
        }
    };
    add("Overlap", timeline_.overlaps, StretchText);
    add("No period", timeline_.gaps, SpanText);
    for (const std::string& note : timeline_.notes) {
        words.push_back("Note: " + note);
    }
    return words;
}

} // namespace

std::string RenderSvg(const Timeline& timeline)
{
    return Picture(timeline).Render();
}

} // namespace timeline
