#include "Diagnostics/Timeline/Timeline.h"

#include <algorithm>
#include <set>
#include <utility>

#include "Diagnostics/Calendar/Clock.h"
#include "Diagnostics/Programme/ProgrammeText.h"
#include "Diagnostics/Text/Words.h"

namespace timeline {

namespace {

using schedule::kDaySeconds;
using schedule::Span;

/// A period starts or ends.
struct Edge {
    int second;
    bool starts;
    std::size_t number;
};

std::vector<Edge> EdgesOf(const std::vector<DayPeriod>& periods)
{
    std::vector<Edge> edges;
    edges.reserve(2 * periods.size());
    for (const DayPeriod& each : periods) {
        if (!each.span.IsEmpty()) {
            edges.push_back({each.span.start, true, each.number});
            edges.push_back({each.span.end, false, each.number});
        }
    }
    // Edges of one second may come in any order: the stretch between them is empty.
    std::sort(edges.begin(), edges.end(),
              [](const Edge& left, const Edge& right) { return left.second < right.second; });
    return edges;
}

/// Sorts the stretch up to the next edge into gaps and overlaps.
void AddStretch(const Span& span, const std::set<std::size_t>& playing, Timeline& timeline)
{
    if (span.IsEmpty() || playing.size() == 1) {
        return;
    }
    if (playing.empty()) {
        timeline.gaps.push_back(span);
        return;
    }
    Stretch stretch{span, playing.size(), {}};
    for (const std::size_t number : playing) {
        if (stretch.periods.size() == schedule::kMostNumbers) {
            break;
        }
        stretch.periods.push_back(number);
    }
    timeline.overlaps.push_back(std::move(stretch));
}

/// Goes through the edges in the order of the day: between two of them, the same periods play.
void AddStretches(Timeline& timeline)
{
    std::set<std::size_t> playing;
    int from = 0;
    for (const Edge& edge : EdgesOf(timeline.periods)) {
        AddStretch({from, edge.second}, playing, timeline);
        from = edge.second;
        if (edge.starts) {
            playing.insert(edge.number);
        } else {
            playing.erase(edge.number);
        }
    }
    AddStretch({from, kDaySeconds}, playing, timeline);
}

/// Those that do not depend on the time of day.
std::vector<std::string> NotesOf(const _VQMPolicy& policy, const Timeline& timeline)
{
    schedule::Programme programme;
    programme.stateIsOk = !policy.bError;
    programme.expiry = ExpiryOn(policy, timeline.day);
    std::vector<std::string> notes = Notes(policy, programme);
    const bool neverPlays = std::all_of(timeline.periods.begin(), timeline.periods.end(),
                                        [](const DayPeriod& each) { return each.span.IsEmpty(); });
    if (neverPlays) {
        notes.push_back(
            Describe(timeline.periods.empty() ? schedule::IdleReason::kNoPeriods : schedule::IdleReason::kNeverPlays));
    }
    return notes;
}

} // namespace

Timeline TimelineOf(const _VQMPolicy& policy, std::string document, const schedule::Day& day, std::optional<int> now)
{
    Timeline timeline;
    timeline.document = std::move(document);
    timeline.day = day;
    timeline.now = now;
    timeline.periods.reserve(policy.listSchedule.size());
    for (const _VQMSchdule& period : policy.listSchedule) {
        timeline.periods.push_back({timeline.periods.size() + 1, &period, schedule::SpanOf(period)});
    }
    std::stable_sort(timeline.periods.begin(), timeline.periods.end(),
                     [](const DayPeriod& left, const DayPeriod& right) { return left.span.start < right.span.start; });
    AddStretches(timeline);
    timeline.notes = NotesOf(policy, timeline);
    return timeline;
}

std::string Title(const Timeline& timeline)
{
    return timeline.document + " on " + schedule::DayText(timeline.day);
}

std::string SpanText(const Span& span)
{
    return schedule::TimeText(span.start) + " to " + schedule::TimeText(span.end);
}

std::string StretchText(const Stretch& stretch)
{
    return SpanText(stretch.span) + ": " + schedule::PeriodsText(stretch.periods, stretch.count);
}

std::string FilesText(const _VQMSchdule& period, std::size_t most)
{
    const std::vector<const _VQMContentInfo*> files = schedule::PlayOrder(period);
    if (files.empty()) {
        return "no files";
    }
    const std::size_t shown = files.size() <= most ? files.size() : most - 1;
    std::string text;
    for (std::size_t index = 0; index < shown; ++index) {
        text += (index == 0 ? "" : ", ") + files[index]->strName;
    }
    if (shown < files.size()) {
        text += (shown == 0 ? "" : " and ") + Counted(files.size() - shown, shown == 0 ? "file" : "further file");
    }
    return text;
}

} // namespace timeline
