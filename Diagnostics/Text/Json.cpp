#include "Diagnostics/Text/Json.h"

#include "Diagnostics/Text/Encodings.h"
#include "Diagnostics/Text/TerminalText.h"

namespace {

Json WithVersion(const Json& content)
{
    Json document = {{"schema_version", kJsonSchemaVersion}};
    document.update(content);
    return document;
}

} // namespace

std::string Utf8(const std::string& text)
{
    return IsUtf8(text) && text.find('\0') == std::string::npos ? text : EscapedForTerminal(text);
}

Json TextOrNull(const std::string& text)
{
    return text.empty() ? Json(nullptr) : Json(Utf8(text));
}

std::string RenderJsonDocument(const Json& content)
{
    return WithVersion(content).dump(kJsonIndent, ' ', true) + "\n";
}

std::string RenderJsonLine(const Json& content)
{
    return WithVersion(content).dump(-1, ' ', true) + "\n";
}
