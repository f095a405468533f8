#pragma once

#include <string>

#include "Diagnostics/Text/Diagnostic.h"
#include "Diagnostics/Text/Json.h"
#include "Diagnostics/Text/Style.h"

// A diagnostic about a place in a document. What comes from names and documents is escaped.

/// "name:line:column: severity: message; expected ...; effect [id]" and a line end.
std::string RenderFirstLine(const std::string& name, const Diagnostic& diagnostic, const Style& style = Style());

/// The source line, and a line that marks the place; nothing where there is no source.
std::string RenderSource(const Snippet& source, const Style& style = Style());

/// The same for programs: text, start, length, cut_before and cut_after.
Json SourceJson(const Snippet& source);
