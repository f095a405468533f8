#include "Tools/Commands/ShowStatus.h"

#include <string>
#include <unistd.h>

#include "Diagnostics/Status/Render.h"
#include "Diagnostics/Status/Report.h"
#include "Diagnostics/Status/Verdict.h"
#include "Diagnostics/Text/TerminalText.h"
#include "Tools/Terminal/Terminal.h"

namespace {

std::string Text(const StatusOptions& options, const status::Report& report, const status::Verdict& verdict)
{
    if (options.json) {
        return RenderJson(report, verdict);
    }
    return options.quiet ? EscapedForTerminal(Sentence(report, verdict)) + "\n"
                         : Render(report, verdict, Style(WantsColour(STDOUT_FILENO)));
}

} // namespace

ExitCode ShowStatus(const StatusOptions& options)
{
    const status::Report report = status::Collect(options.places);
    const status::Verdict verdict = Judge(report);
    static_cast<void>(Print(Text(options, report, verdict)));
    return verdict.HasErrors() ? ExitCode::kFindings : ExitCode::kOk;
}
