#include "Diagnostics/Readiness/Render.h"

#include <string_view>

#include "Diagnostics/Readiness/ScheduleLint.h"
#include "Diagnostics/Text/TerminalText.h"
#include "Diagnostics/Text/Words.h"

namespace readiness {

namespace {

std::string ConstantsLine(const Constants& constants)
{
    if (constants.state == DocumentState::kNotNeeded) {
        return "constants: not needed: the schedule is given";
    }
    const std::string* const file = constants.ScheduleFile();
    return "constants: " + constants.path + (file != nullptr ? " (ScheduleFile is " + Quoted(*file) + ")" : "");
}

std::string ExpiryText(const Schedule& schedule)
{
    const std::string day = schedule::DayText(schedule::ExpirationOf(schedule.policy));
    switch (schedule.expiry) {
    case schedule::Expiry::kExpired:
        return "expired on " + day;
    case schedule::Expiry::kNone:
        return "does not expire";
    default:
        return "expires on " + day;
    }
}

std::string ScheduleLine(const Report& report)
{
    const Schedule& schedule = report.schedule;
    std::string line = "schedule:  " + schedule.path;
    if (schedule.state == DocumentState::kLoaded) {
        line += " (" + Counted(schedule.policy.listSchedule.size(), "period") + ", " +
                Counted(report.contents.items.size(), "item") + ", " + ExpiryText(schedule) + ")";
    }
    return line;
}

std::string MediaLine(const Contents& contents)
{
    std::string line = "media:     " + contents.directory + " (";
    if (!contents.items.empty()) {
        line += std::to_string(contents.complete) + " of " + Counted(contents.items.size(), "item") + " complete, " +
                BytesText(contents.missingBytes) + " to copy, ";
    }
    return line + (contents.freeBytes ? BytesText(*contents.freeBytes) + " free)" : "free space not known)");
}

/// Where the check stopped: at the first of several items that do not match. Empty for one.
std::string StoppedAt(const Contents& contents)
{
    if (contents.items.size() - contents.complete < 2) {
        return "";
    }
    for (const ContentItem& item : contents.items) {
        if (!contents.SizeMatches(item)) {
            return "; the TV looks no further than " + Quoted(contents.FileOf(item).name);
        }
    }
    return "";
}

std::string LintLine(const Report& report)
{
    const std::string counts = CountsText(report.findings.counts);
    return counts.empty()
               ? ""
               : EscapedForTerminal("lint:      " + counts + " in the schedule; see '" + LintCommand(report) + "'") +
                     "\n";
}

const char* OutcomeText(Outcome outcome)
{
    switch (outcome) {
    case Outcome::kNotChecked:
        return "it is not known whether it will play";
    case Outcome::kPlaysNothing:
        return "it will not play";
    case Outcome::kNotAsMeant:
        return "it will play, but not what was meant";
    case Outcome::kPerhapsNotMeant:
        return "it will play, but perhaps not what was meant";
    case Outcome::kAsMeant:
        break;
    }
    return "it will play what was meant";
}

std::string SummaryText(const Report& report, const std::vector<Diagnostic>& diagnostics)
{
    const Contents& contents = report.contents;
    const std::string text = OutcomeText(OutcomeOf(report, diagnostics));
    if (!report.verdict.ran) {
        return text + ": " + report.verdict.problem;
    }
    if (!report.verdict.haveSchedule) {
        return text + ": there is no readable schedule";
    }
    if (contents.items.empty()) {
        return text + ": no file is named";
    }
    return text + "; " + std::to_string(contents.complete) + " of " + Counted(contents.items.size(), "item") +
           " complete" + StoppedAt(contents);
}

/// What to write into the file that a diagnostic misses.
std::string AdviceOn(const Diagnostic& diagnostic, const Report& report)
{
    if (diagnostic.id != "constants-missing" || report.constants.newText.empty()) {
        return "";
    }
    std::string text = "    Write these lines into it; 'vqmctl constants init' does:\n";
    std::string_view rest = report.constants.newText;
    while (!rest.empty()) {
        const std::size_t end = rest.find('\n');
        text += "      " + EscapedForTerminal(rest.substr(0, end)) + "\n";
        rest.remove_prefix(end + 1);
    }
    return text;
}

const char* PrefixOf(const Diagnostic& diagnostic)
{
    return diagnostic.blocking ? "problem:" : diagnostic.severity == Severity::kError ? "error:" : "note:";
}

} // namespace

std::string VerdictLine(const Report& report)
{
    return std::string("the TV: ") + (!report.verdict.ran      ? "not checked"
                                      : report.verdict.Ready() ? "ready"
                                                               : "not ready");
}

std::string SummaryLine(const Report& report, const std::vector<Diagnostic>& diagnostics)
{
    return EscapedForTerminal(SummaryText(report, diagnostics));
}

std::string Render(const Report& report, const Style& style)
{
    std::string text = EscapedForTerminal(ConstantsLine(report.constants)) + "\n" +
                       EscapedForTerminal(ScheduleLine(report)) + "\n" +
                       EscapedForTerminal(MediaLine(report.contents)) + "\n";
    const std::vector<Diagnostic> diagnostics = Explain(report);
    for (const Diagnostic& diagnostic : diagnostics) {
        text += style.Paint(diagnostic.severity, PrefixOf(diagnostic)) + " " + EscapedForTerminal(diagnostic.message) +
                " [" + diagnostic.id + "]\n" + AdviceOn(diagnostic, report);
    }
    const std::string verdict = VerdictLine(report);
    return text + LintLine(report) + "summary:   " + SummaryLine(report, diagnostics) + "\n" +
           (report.verdict.Ready() ? style.Good(verdict) : style.Paint(Severity::kError, verdict)) + "\n";
}

} // namespace readiness
