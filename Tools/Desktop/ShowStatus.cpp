#include "Tools/Desktop/ShowStatus.h"

#include <vector>

#include "Diagnostics/Status/Render.h"
#include "Diagnostics/Status/Report.h"
#include "Diagnostics/Status/Verdict.h"
#include "Tools/Terminal/Terminal.h"

ExitCode ShowStatus(const StatusOptions& options)
{
    const status::Report report = status::Collect(options.constants);
    const std::vector<Diagnostic> reasons = ReasonsAgainst(report);
    static_cast<void>(Print(options.json ? RenderJson(report, reasons) : Render(report, reasons)));
    return reasons.empty() ? ExitCode::kOk : ExitCode::kFindings;
}
