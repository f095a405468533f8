#include "Diagnostics/Lint/Render.h"

#include "Diagnostics/Text/RenderDiagnostic.h"

namespace lint {

std::string Render(const FileResult& file, const Style& style)
{
    std::string text;
    for (const Diagnostic& finding : file.report.findings) {
        text += RenderFirstLine(file.name, finding, style) + RenderSource(finding.source, style);
    }
    return text;
}

std::string RenderOneline(const FileResult& file, const Style& style)
{
    std::string text;
    for (const Diagnostic& finding : file.report.findings) {
        text += RenderFirstLine(file.name, finding, style);
    }
    return text;
}

} // namespace lint
