#include "Diagnostics/Sizes/Sizes.h"
#include "Diagnostics/Text/Encodings.h"
#include "Diagnostics/Text/JsonWriter.h"

namespace sizes {

namespace {

/// What stands in the document: in UTF-8, or in the only other encoding that the TV reads.
std::string DocumentText(const std::string& bytes)
{
    return IsUtf8(bytes) ? bytes : FromLatin1(bytes);
}

Json CorrectionJson(const Correction& correction)
{
    return {{"what", correction.what},          {"file", TextOrNull(correction.file)},
            {"line", correction.line},          {"column", correction.column},
            {"offset", correction.edit.offset}, {"old", DocumentText(correction.edit.oldText)},
            {"new", correction.edit.newText}};
}

Json ProblemJson(const Diagnostic& problem)
{
    return {{"id", problem.id},
            {"line", problem.line},
            {"column", problem.column},
            {"message", Utf8(problem.message)},
            {"path", TextOrNull(problem.path)}};
}

} // namespace

bool WriteJson(const Report& report, const std::string& name, const std::string& media, bool written,
               const std::function<bool(std::string_view part)>& write)
{
    JsonWriter json(write, false);
    json.Member("file", Utf8(name));
    json.Member("media", Utf8(media));
    json.Member("items", report.items);
    json.Member("written", written);
    json.BeginArray("corrections");
    for (const Correction& correction : report.corrections) {
        json.Element(CorrectionJson(correction));
    }
    json.End();
    json.BeginArray("problems");
    for (const Diagnostic& problem : report.problems) {
        json.Element(ProblemJson(problem));
    }
    json.End();
    json.Member("not_shown", report.problemCount - report.problems.size());
    return json.Finish();
}

} // namespace sizes
