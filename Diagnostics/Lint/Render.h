#pragma once

#include <string>
#include <vector>

#include "Diagnostics/Lint/Report.h"
#include "Diagnostics/Text/Style.h"

namespace lint {

/// What became of one file.
struct FileResult {
    std::string name;    ///< as it is shown; need not be UTF-8
    std::string error{}; ///< why it could not be read to its end; empty when it was
    Report report{};
};

// Each gives whole lines. Control characters and broken UTF-8 from names and documents come out
// escaped.

/// "file:line:column: severity: message [rule]", the source line, and a line that marks the place.
std::string Render(const FileResult& file, const Style& style = Style());

/// Only the first of these lines for each finding.
std::string RenderOneline(const FileResult& file, const Style& style = Style());

/// All files as one document of Docs/schemas/lint.schema.json.
std::string RenderJson(const std::vector<FileResult>& files);

/// All files as one log of SARIF 2.1.0, with what mends a finding where that is known. `version` is the tool's.
std::string RenderSarif(const std::vector<FileResult>& files, const std::string& version);

} // namespace lint
