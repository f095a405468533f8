#include "Diagnostics/Timeline/Render.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "Diagnostics/Programme/ProgrammeText.h"
#include "Diagnostics/Text/TerminalText.h"
#include "Diagnostics/Text/Words.h"

namespace timeline {

namespace {

using schedule::kDaySeconds;
using schedule::Span;

constexpr std::size_t kMostRows = 200;
constexpr std::size_t kMostLines = 20;
constexpr std::size_t kMostFiles = 20;
constexpr std::size_t kHours = 24;

/// What a cell of a row shows.
enum class Cell { kNothing, kPlays, kOverlaps, kNoFiles, kNeverPlays, kNow };

struct Look {
    const char* plain;
    const char* block;
    const char* colour;  ///< as a parameter of the terminal's colour sequence; null for the usual one
    const char* meaning; ///< for the legend; null where there is nothing to explain
};

const Look& LookOf(Cell cell)
{
    // In the order of `Cell`.
    static constexpr std::array<Look, 6> kLooks = {{
        {".", "\u00b7", "2", nullptr},
        {"=", "\u2588", "32", "plays"},
        {"#", "\u2593", "33", "overlaps"},
        {"-", "\u2591", "2", "plays no file"},
        {"x", "x", "31", "never plays"},
        {"|", "\u2502", "1;36", nullptr},
    }};
    return kLooks[static_cast<std::size_t>(cell)];
}

class Picture {
public:
    Picture(const Timeline& timeline, const TerminalStyle& style)
        : timeline_(timeline),
          style_(style),
          shown_(std::min(timeline.periods.size(), kMostRows)),
          indent_(std::to_string(timeline.periods.size()).size() + 1),
          cells_(CellsIn(style.columns, indent_))
    {
    }

    std::string Render()
    {
        std::string text = EscapedForTerminal(Title(timeline_)) + "\n";
        if (!timeline_.periods.empty()) {
            text += "\n" + Hours();
            for (std::size_t index = 0; index < shown_; ++index) {
                text += Row(timeline_.periods[index]);
            }
            text += More(timeline_.periods.size() - shown_, "period") + NowLine() + Legend();
        }
        return text + "\n" + Words();
    }

private:
    /// A whole number of cells an hour where there is room, and room for the last hour's name.
    static std::size_t CellsIn(std::size_t columns, std::size_t indent)
    {
        const std::size_t room = columns - std::min(columns, indent + 2);
        return std::clamp(room / kHours, std::size_t{1}, std::size_t{6}) * kHours;
    }

    std::size_t CellOf(int second) const
    {
        return static_cast<std::size_t>(second) * cells_ / static_cast<std::size_t>(kDaySeconds);
    }

    std::string Indent() const { return std::string(indent_, ' '); }

    std::string Painted(Cell cell, const std::string& text) const
    {
        return style_.colour ? std::string("\033[") + LookOf(cell).colour + "m" + text + "\033[0m" : text;
    }

    std::string Glyph(Cell cell) const { return style_.blocks ? LookOf(cell).block : LookOf(cell).plain; }

    std::string Hours() const;
    std::string Row(const DayPeriod& each);
    std::vector<Cell> CellsOf(const DayPeriod& each) const;
    std::string Draw(const std::vector<Cell>& cells);
    std::string More(std::size_t count, const std::string& what) const;
    std::string NowLine() const;
    std::string Legend() const;
    std::string Words() const;

    const Timeline& timeline_;
    TerminalStyle style_;
    std::size_t shown_;
    std::size_t indent_;
    std::size_t cells_;
    std::array<bool, 6> used_ = {}; ///< by cell
};

/// The names of the hours and a ruler under them.
std::string Picture::Hours() const
{
    const std::size_t perHour = cells_ / kHours;
    // A name takes two characters, and a blank must follow.
    const std::size_t step = perHour == 1 ? 4 : perHour == 2 ? 2 : perHour == 3 ? 2 : 1;
    std::string names = Indent();
    std::string ruler = Indent();
    for (std::size_t hour = 0; hour <= kHours; hour += step) {
        const std::size_t width = hour < kHours ? step * perHour : 2;
        names += TwoDigits(static_cast<long long>(hour)) + std::string(hour < kHours ? width - 2 : 0, ' ');
        ruler += "|" + std::string(hour < kHours ? width - 1 : 0, ' ');
    }
    return names + "\n" + ruler + "\n";
}

std::vector<Cell> Picture::CellsOf(const DayPeriod& each) const
{
    std::vector<Cell> cells(cells_, Cell::kNothing);
    if (timeline_.now) {
        cells[CellOf(*timeline_.now)] = Cell::kNow;
    }
    if (each.span.IsEmpty()) {
        cells[std::min(CellOf(each.span.start), cells_ - 1)] = Cell::kNeverPlays;
        return cells;
    }
    const auto fill = [&](const Span& span, Cell cell) {
        for (std::size_t index = CellOf(span.start); index <= CellOf(span.end - 1); ++index) {
            cells[index] = cell;
        }
    };
    fill(each.span, each.period->listContents.empty() ? Cell::kNoFiles : Cell::kPlays);
    // The stretches are sorted and do not overlap each other.
    auto stretch = std::partition_point(timeline_.overlaps.begin(), timeline_.overlaps.end(),
                                        [&](const Stretch& other) { return other.span.end <= each.span.start; });
    for (; stretch != timeline_.overlaps.end() && stretch->span.start < each.span.end; ++stretch) {
        fill(stretch->span, Cell::kOverlaps);
    }
    if (timeline_.now) {
        cells[CellOf(*timeline_.now)] = Cell::kNow;
    }
    return cells;
}

std::string Picture::Draw(const std::vector<Cell>& cells)
{
    std::string text;
    for (auto next = cells.begin(); next != cells.end();) {
        const auto end = std::find_if(next, cells.end(), [next](Cell other) { return other != *next; });
        std::string run;
        used_[static_cast<std::size_t>(*next)] = true;
        const Cell cell = *next;
        for (; next != end; ++next) {
            run += Glyph(cell);
        }
        text += Painted(cell, run);
    }
    return text;
}

std::string Picture::Row(const DayPeriod& each)
{
    const std::string number = std::to_string(each.number);
    const std::string words = schedule::DescribeTimes(*each.period) + "; " + FilesText(*each.period, kMostFiles);
    return std::string(indent_ - 1 - number.size(), ' ') + number + " " + Draw(CellsOf(each)) + "\n" + Indent() +
           CutForTerminal(EscapedForTerminal(words), style_.columns - std::min(style_.columns, indent_)) + "\n";
}

std::string Picture::More(std::size_t count, const std::string& what) const
{
    return count == 0 ? "" : Indent() + "and " + Counted(count, "further " + what) + "\n";
}

std::string Picture::NowLine() const
{
    if (!timeline_.now) {
        return "";
    }
    const std::size_t column = CellOf(*timeline_.now);
    const std::string words = "now " + schedule::TimeText(*timeline_.now);
    const bool left = column > words.size();
    const std::string line =
        left ? std::string(column - words.size() - 1, ' ') + words + " ^" : std::string(column, ' ') + "^ " + words;
    return Indent() + Painted(Cell::kNow, line) + "\n";
}

std::string Picture::Legend() const
{
    std::string text;
    std::size_t width = style_.columns; // that of the line so far: full
    for (std::size_t index = 0; index < used_.size(); ++index) {
        const Cell cell = static_cast<Cell>(index);
        if (!used_[index] || LookOf(cell).meaning == nullptr) {
            continue;
        }
        // Three blanks, the sign, a blank and the meaning.
        const std::size_t needed = 5 + std::string_view(LookOf(cell).meaning).size();
        const bool fits = width + needed <= style_.columns;
        text += fits ? "   " : "\n" + Indent();
        width = fits ? width + needed : indent_ + needed - 3;
        text += Painted(cell, Glyph(cell)) + " " + LookOf(cell).meaning;
    }
    return text + "\n";
}

/// What the picture shows, to the second.
std::string Picture::Words() const
{
    std::string text;
    const auto line = [&text](const char* what, const std::string& words) {
        text += std::string(what) + std::string(9 - std::string_view(what).size(), ' ') + words + "\n";
    };
    const auto list = [&line](const char* what, const auto& stretches, auto describe) {
        std::size_t index = 0;
        for (; index < std::min(stretches.size(), kMostLines); ++index) {
            line(what, describe(stretches[index]));
        }
        if (index < stretches.size()) {
            line(what, "and " + std::to_string(stretches.size() - index) + " more");
        }
    };
    list("overlap", timeline_.overlaps, StretchText);
    list("gap", timeline_.gaps, SpanText);
    for (const std::string& note : timeline_.notes) {
        line("note", EscapedForTerminal(note));
    }
    return text;
}

} // namespace

std::string RenderForTerminal(const Timeline& timeline, const TerminalStyle& style)
{
    return Picture(timeline, style).Render();
}

} // namespace timeline
