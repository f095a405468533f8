#include "Diagnostics/Group/Render.h"

#include "Diagnostics/Text/Json.h"
#include "Diagnostics/Text/RenderDiagnostic.h"

namespace group {

namespace {

Json PlaceJson(const Diagnostic& place)
{
    return {{"file", Utf8(place.path)},       {"line", place.line},
            {"column", place.column},         {"end_column", place.endColumn},
            {"message", Utf8(place.message)}, {"source", SourceJson(place.source)}};
}

Json DifferenceJson(const Difference& difference)
{
    Json json = {{"id", difference.here.id}, {"severity", NameOf(difference.here.severity)}};
    json.update(PlaceJson(difference.here));
    json["expected"] = Utf8(difference.here.expected);
    json["effect"] = Utf8(difference.here.effect);
    json["other"] = difference.there ? PlaceJson(*difference.there) : Json();
    return json;
}

} // namespace

std::string Render(const Report& report)
{
    std::string text;
    for (const Difference& difference : report.differences) {
        text += RenderFirstLine(difference.here.path, difference.here) + RenderSource(difference.here.source);
        if (difference.there) {
            text += RenderFirstLine(difference.there->path, *difference.there) + RenderSource(difference.there->source);
        }
    }
    return text;
}

std::string RenderJson(const Report& report)
{
    Json json = {{"documents", Json::array()}, {"not_shown", report.notKept}, {"differences", Json::array()}};
    for (const std::string& name : report.documents) {
        json["documents"].push_back(Utf8(name));
    }
    for (const Difference& difference : report.differences) {
        json["differences"].push_back(DifferenceJson(difference));
    }
    return RenderJsonDocument(json);
}

} // namespace group
