#include "Diagnostics/Lint/Render.h"
#include "Diagnostics/Text/Json.h"
#include "Diagnostics/Text/RenderDiagnostic.h"

namespace lint {

namespace {

Json FixJson(const Edit& fix)
{
    return {{"offset", fix.offset}, {"old", Utf8(fix.oldText)}, {"new", fix.newText}};
}

Json FindingJson(const Diagnostic& finding)
{
    Json json = {{"id", finding.id},
                 {"severity", NameOf(finding.severity)},
                 {"line", finding.line},
                 {"column", finding.column},
                 {"end_column", finding.endColumn},
                 {"message", Utf8(finding.message)},
                 {"expected", Utf8(finding.expected)},
                 {"effect", Utf8(finding.effect)},
                 {"source", SourceJson(finding.source)}};
    if (finding.fix) {
        json["fix"] = FixJson(*finding.fix);
    }
    return json;
}

Json CountsJson(const Counts& counts)
{
    return {{"errors", counts.errors}, {"warnings", counts.warnings}, {"notes", counts.notes}};
}

Json FileJson(const FileResult& file)
{
    Json json = {{"file", Utf8(file.name)}};
    if (!file.error.empty()) {
        json["error"] = Utf8(file.error);
    }
    json["counts"] = CountsJson(file.report.counts);
    json["not_shown"] = file.report.notKept;
    json["findings"] = Json::array();
    for (const Diagnostic& finding : file.report.findings) {
        json["findings"].push_back(FindingJson(finding));
    }
    return json;
}

} // namespace

std::string RenderJson(const std::vector<FileResult>& files)
{
    Json json = {{"files", Json::array()}};
    for (const FileResult& file : files) {
        json["files"].push_back(FileJson(file));
    }
    return RenderJsonDocument(json);
}

} // namespace lint
