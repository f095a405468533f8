#include "Diagnostics/Lint/Render.h"

#include "Diagnostics/Text/RenderDiagnostic.h"

namespace lint {

std::string Render(const FileResult& file)
{
    std::string text;
    for (const Diagnostic& finding : file.report.findings) {
        text += RenderFirstLine(file.name, finding) + RenderSource(finding.source);
    }
    return text;
}

std::string RenderOneline(const FileResult& file)
{
    std::string text;
    for (const Diagnostic& finding : file.report.findings) {
        text += RenderFirstLine(file.name, finding);
    }
    return text;
}

} // namespace lint
