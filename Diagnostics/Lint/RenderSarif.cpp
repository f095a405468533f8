#include <map>
#include <string_view>

#include <boost/uuid/name_generator_sha1.hpp>
#include <boost/uuid/uuid.hpp>
#include <boost/uuid/uuid_io.hpp>

#include "Diagnostics/Lint/Render.h"
#include "Diagnostics/Lint/RuleText.h"
#include "Diagnostics/Text/Json.h"
#include "Diagnostics/Text/Words.h"

namespace lint {

namespace {

constexpr char kSchema[] = "https://docs.oasis-open.org/sarif/sarif/v2.1.0/errata01/os/schemas/sarif-schema-2.1.0.json";

/// A path in a URI: RFC 3986 leaves only the unreserved characters as they are.
std::string EscapedPath(std::string_view path)
{
    constexpr std::string_view kUnreserved = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~";
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string escaped;
    for (const char byte : path) {
        if (byte == '/' || kUnreserved.find(byte) != std::string_view::npos) {
            escaped += byte;
        } else {
            const auto value = static_cast<unsigned char>(byte);
            escaped.append({'%', kDigits[value >> 4U], kDigits[value & 0xFU]});
        }
    }
    return escaped;
}

/// A relative name stays relative: the reader of the log knows its root.
Json LocationJson(const std::string& name)
{
    return {{"uri", (name.substr(0, 1) == "/" ? "file://" : "") + EscapedPath(name)}};
}

Json RuleJson(const RuleText& text)
{
    const std::optional<Rule> rule = FindRule(text.name);
    return {{"id", std::string(text.name)},
            {"shortDescription", {{"text", FirstSentence(text)}}},
            {"help", {{"text", PlainText(text, 80)}, {"markdown", std::string(text.markdown)}}},
            {"defaultConfiguration", {{"level", NameOf(SeverityOf(*rule))}}}};
}

Json RulesJson()
{
    Json rules = Json::array();
    for (const RuleText& text : RuleTexts()) {
        rules.push_back(RuleJson(text));
    }
    return rules;
}

/// Identifies a finding across versions of the file. Without the line number, which changes with the lines
/// before it.
std::string Subject(const Diagnostic& finding)
{
    const std::string& line = finding.source.text;
    const std::size_t first = line.find_first_not_of(" \t");
    return finding.id + '\n' + (first == std::string::npos ? "" : line.substr(first));
}

/// `occurrence` tells findings with the same subject apart.
std::string Fingerprint(const std::string& subject, int occurrence)
{
    boost::uuids::name_generator_sha1 named{boost::uuids::uuid()};
    return to_string(named(subject + '\n' + std::to_string(occurrence)));
}

Json RegionJson(const Diagnostic& finding)
{
    Json region = {{"startLine", finding.line}, {"startColumn", finding.column}, {"endColumn", finding.endColumn}};
    if (finding.source.length > 0) {
        region["snippet"] = {{"text", Utf8(finding.source.text.substr(finding.source.start, finding.source.length))}};
    }
    return region;
}

Json FixJson(const Diagnostic& finding, const Json& location)
{
    Json region = {{"startLine", finding.line},
                   {"startColumn", finding.column},
                   {"endColumn", finding.endColumn},
                   {"byteOffset", finding.fix->offset},
                   {"byteLength", finding.fix->oldText.size()}};
    Json replacement = {{"deletedRegion", std::move(region)}, {"insertedContent", {{"text", finding.fix->newText}}}};
    return {{"description", {{"text", "Write " + Quoted(finding.fix->newText)}}},
            {"artifactChanges",
             Json::array({{{"artifactLocation", location}, {"replacements", Json::array({std::move(replacement)})}}})}};
}

std::string MessageOf(const Diagnostic& finding)
{
    return finding.message + (finding.expected.empty() ? "" : "; expected " + finding.expected) + "; " + finding.effect;
}

void AddResults(const FileResult& file, Json& results)
{
    const Json location = LocationJson(file.name);
    std::map<std::string, int> occurrences;
    for (const Diagnostic& finding : file.report.findings) {
        const std::string subject = Subject(finding);
        Json result = {
            {"ruleId", finding.id},
            {"ruleIndex", static_cast<int>(*FindRule(finding.id))},
            {"level", NameOf(finding.severity)},
            {"message", {{"text", Utf8(MessageOf(finding))}}},
            {"locations",
             Json::array({{{"physicalLocation", {{"artifactLocation", location}, {"region", RegionJson(finding)}}}}})},
            {"partialFingerprints", {{"finding/v1", Fingerprint(subject, ++occurrences[subject])}}}};
        if (finding.fix) {
            result["fixes"] = Json::array({FixJson(finding, location)});
        }
        results.push_back(std::move(result));
    }
}

Json NotificationJson(const char* level, const std::string& text, const std::string& name)
{
    return {{"level", level},
            {"message", {{"text", Utf8(text)}}},
            {"locations", Json::array({{{"physicalLocation", {{"artifactLocation", LocationJson(name)}}}}})}};
}

} // namespace

std::string RenderSarif(const std::vector<FileResult>& files, const std::string& version)
{
    Json results = Json::array();
    Json notifications = Json::array();
    bool complete = true;
    for (const FileResult& file : files) {
        AddResults(file, results);
        if (!file.error.empty()) {
            complete = false;
            notifications.push_back(NotificationJson("error", "the file cannot be read: " + file.error, file.name));
        }
        if (file.report.notKept > 0) {
            notifications.push_back(
                NotificationJson("warning", Counted(file.report.notKept, "further finding") + " not shown", file.name));
        }
    }
    const Json driver = {{"name", "vqmctl schedule lint"}, {"version", version}, {"rules", RulesJson()}};
    Json invocation = {{"executionSuccessful", complete}, {"toolExecutionNotifications", std::move(notifications)}};
    Json run = {{"tool", {{"driver", driver}}},
                {"columnKind", "unicodeCodePoints"},
                {"invocations", Json::array({std::move(invocation)})},
                {"results", std::move(results)}};
    const Json log = {{"$schema", kSchema}, {"version", "2.1.0"}, {"runs", Json::array({std::move(run)})}};
    return log.dump(kJsonIndent, ' ', true) + "\n";
}

} // namespace lint
