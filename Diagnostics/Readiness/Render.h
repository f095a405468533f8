#pragma once

#include <optional>
#include <string>

#include "Diagnostics/Readiness/Readiness.h"
#include "Diagnostics/Text/JsonWriter.h"
#include "Diagnostics/Text/Style.h"

namespace readiness {

/// What was looked at, a line for each diagnostic, and the verdict. Fit for a terminal.
std::string Render(const Report& report, const Style& style = Style());

/// Writes one document of Docs/schemas/check.schema.json. `watched` is the time of one answer of many, which takes
/// one line; a single answer has none, and is indented. Returns false when `sink` did: the reader has gone.
bool WriteJson(const Report& report, const std::optional<schedule::Moment>& watched, const JsonWriter::Sink& sink);

/// One document of Docs/schemas/constants.schema.json.
std::string RenderJson(const Constants& constants);

/// What is known of the constants file, without its values: a part of a larger document.
Json ConstantsJson(const Constants& constants);

/// "not-well-formed" and so on, for programs.
const char* NameOf(DocumentState state);

/// The library's verdict alone: "the TV: ready", "not ready" or "not checked".
std::string VerdictLine(const Report& report);

/// Whether it will play what was meant. `diagnostics`: the report's own. Fit for a terminal.
std::string SummaryLine(const Report& report, const std::vector<Diagnostic>& diagnostics);

} // namespace readiness
