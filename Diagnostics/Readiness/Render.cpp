#include "Diagnostics/Readiness/Render.h"

#include "Diagnostics/Text/TerminalText.h"
#include "Diagnostics/Text/Words.h"

namespace readiness {

namespace {

std::string ConstantsLine(const Constants& constants)
{
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
                Counted(report.contents.files.size(), "item") + ", " + ExpiryText(schedule) + ")";
    }
    return line;
}

std::string MediaLine(const Contents& contents)
{
    std::string line = "media:     " + contents.directory + " (";
    if (!contents.files.empty()) {
        line += std::to_string(contents.complete) + " of " + Counted(contents.files.size(), "item") + " complete, " +
                BytesText(contents.missingBytes) + " to copy, ";
    }
    return line + (contents.freeBytes ? BytesText(*contents.freeBytes) + " free)" : "free space not known)");
}

/// The first of several, where the TV gave up.
std::string StoppedAt(const Contents& contents)
{
    if (contents.files.size() - contents.complete < 2) {
        return "";
    }
    for (const ContentFile& file : contents.files) {
        if (!file.SizeMatches()) {
            return "; the TV looks no further than " + Quoted(file.name);
        }
    }
    return "";
}

std::string VerdictText(const Report& report)
{
    const Verdict& verdict = report.verdict;
    const Contents& contents = report.contents;
    if (!verdict.ran) {
        return "not checked: " + verdict.problem;
    }
    if (!verdict.haveSchedule) {
        return "not ready: there is no readable schedule";
    }
    const std::string items = contents.files.empty() ? "it names no file"
                                                     : std::to_string(contents.complete) + " of " +
                                                           Counted(contents.files.size(), "item") + " complete";
    return (verdict.Ready() ? "ready: schedule there, " : "not ready: schedule there, ") + items + StoppedAt(contents);
}

} // namespace

std::string VerdictLine(const Report& report)
{
    return EscapedForTerminal(VerdictText(report));
}

std::string Render(const Report& report)
{
    std::string text = EscapedForTerminal(ConstantsLine(report.constants)) + "\n" +
                       EscapedForTerminal(ScheduleLine(report)) + "\n" +
                       EscapedForTerminal(MediaLine(report.contents)) + "\n";
    for (const Diagnostic& diagnostic : Explain(report)) {
        text += (diagnostic.blocking ? "problem: " : "note: ") + EscapedForTerminal(diagnostic.message) + " [" +
                diagnostic.id + "]\n";
    }
    return text + VerdictLine(report) + "\n";
}

} // namespace readiness
