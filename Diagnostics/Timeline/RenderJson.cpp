#include "Diagnostics/Programme/ProgrammeText.h"
#include "Diagnostics/Timeline/Render.h"

namespace timeline {

namespace {

using schedule::TimeText;

Json PeriodJson(const DayPeriod& each)
{
    Json json = {{"period", each.number},
                 {"start", TimeText(schedule::SecondsOf(each.period->stStartTime))},
                 {"end", TimeText(schedule::SecondsOf(each.period->stEndTime))},
                 {"ever_plays", !each.span.IsEmpty()},
                 {"files", Json::array()}};
    for (const _VQMContentInfo* file : schedule::PlayOrder(*each.period)) {
        json["files"].push_back(schedule::FileJson(*file));
    }
    return json;
}

Json SpanJson(const schedule::Span& span)
{
    return {{"start", TimeText(span.start)}, {"end", TimeText(span.end)}};
}

Json StretchJson(const Stretch& stretch)
{
    Json json = SpanJson(stretch.span);
    json["count"] = stretch.count;
    json["periods"] = stretch.periods;
    return json;
}

} // namespace

bool WriteJson(const Timeline& timeline, const schedule::PolicyFile& file, const schedule::Clock& clock,
               const JsonWriter::Sink& sink)
{
    JsonWriter json(sink, false);
    json.Member("file", Utf8(file.name));
    json.Member("text_after_nul", file.textAfterNul);
    json.Member("day", schedule::DayText(timeline.day));
    json.Member("now", timeline.now ? Json(TimeText(*timeline.now)) : Json());
    json.Member("clock", schedule::ClockJson(clock));
    const auto list = [&json](const char* name, const auto& entries, auto render) {
        json.BeginArray(name);
        for (const auto& each : entries) {
            json.Element(render(each));
        }
        json.End();
    };
    list("periods", timeline.periods, PeriodJson);
    list("overlaps", timeline.overlaps, StretchJson);
    list("gaps", timeline.gaps, SpanJson);
    json.Member("state_ok", !file.policy.bError);
    json.Member("expiration", schedule::ExpirationJson(file.policy, timeline.day));
    json.Member("notes", timeline.notes);
    return json.Finish();
}

} // namespace timeline
