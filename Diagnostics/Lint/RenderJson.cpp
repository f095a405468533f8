#include <algorithm>
#include <string_view>

#include <glib.h>

#include "Diagnostics/Lint/Render.h"
#include "Diagnostics/Text/Json.h"

namespace lint {

namespace {

Json SourceJson(const Snippet& source)
{
    const std::string before = Utf8(source.text.substr(0, source.start));
    const std::string subject = Utf8(source.text.substr(source.start, source.length));
    const auto characters = [](const std::string& text) {
        return g_utf8_strlen(text.data(), static_cast<gssize>(text.size()));
    };
    return {{"text", before + subject + Utf8(source.text.substr(source.start + source.length))},
            {"start", characters(before)},
            {"length", characters(subject)},
            {"cut_before", source.cutBefore},
            {"cut_after", source.cutAfter}};
}

Json FindingJson(const Diagnostic& finding)
{
    return {{"id", finding.id},
            {"severity", NameOf(finding.severity)},
            {"line", finding.line},
            {"column", finding.column},
            {"end_column", finding.endColumn},
            {"message", Utf8(finding.message)},
            {"expected", Utf8(finding.expected)},
            {"effect", Utf8(finding.effect)},
            {"source", SourceJson(finding.source)}};
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
