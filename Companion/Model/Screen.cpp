#include "Companion/Model/Screen.h"

#include <algorithm>
#include <set>
#include <unordered_map>
#include <utility>

#include "Diagnostics/Readiness/Render.h"
#include "Diagnostics/Text/TerminalText.h"

namespace companion {

namespace {

using schedule::Span;

/// As many names as are shown at once.
constexpr std::size_t kMostNames = 3;

/// More rows are too many to scroll with a remote control, and the toolkit takes seconds to delete 100,000.
constexpr std::size_t kMostFiles = 500;

/// Two periods whose ends are closer than this look like one: two minutes are a pixel or two.
constexpr int kSmallestGap = 120;
/// More periods than this are not told apart, even where they touch.
constexpr std::size_t kMostPeriods = 96;

/// The message of the finding that matters most: what keeps the TV from playing, else what makes it play
/// something else than what is written.
std::string ObstacleOf(const std::vector<Diagnostic>& diagnostics)
{
    const auto blocks = [](const Diagnostic& each) { return each.blocking; };
    auto found = std::find_if(diagnostics.begin(), diagnostics.end(), blocks);
    if (found == diagnostics.end()) {
        found = std::find_if(diagnostics.begin(), diagnostics.end(),
                             [](const Diagnostic& each) { return each.severity == Severity::kError; });
    }
    return found == diagnostics.end() ? "" : EscapedForTerminal(found->message);
}

Programme ProgrammeAt(const _VQMPolicy& policy, const schedule::Moment& moment, std::optional<schedule::Change>* next)
{
    schedule::Programme found = schedule::ProgrammeAt(policy, moment);
    Programme programme;
    programme.idle = found.idleReason;
    for (const schedule::ActivePeriod& period : found.active) {
        programme.fileCount += period.files.size();
        for (const _VQMContentInfo* file : period.files) {
            if (programme.files.size() == kMostNames) {
                break;
            }
            programme.files.push_back(EscapedForTerminal(file->strName));
        }
    }
    if (next != nullptr) {
        *next = std::move(found.next);
    }
    return programme;
}

/// The time of a change is all that what plays then depends on: each day is like the other.
std::optional<Change> ChangeOf(const _VQMPolicy& policy, const schedule::Moment& moment,
                               const std::optional<schedule::Change>& next)
{
    if (!next) {
        return std::nullopt;
    }
    return Change{next->second, next->tomorrow, ProgrammeAt(policy, {moment.day, next->second}, nullptr)};
}

std::vector<Span> PeriodsOf(const _VQMPolicy& policy)
{
    std::vector<Span> spans;
    for (const _VQMSchdule& period : policy.listSchedule) {
        const Span span = schedule::SpanOf(period);
        if (!span.IsEmpty()) {
            spans.push_back(span);
        }
    }
    std::sort(spans.begin(), spans.end(), [](const Span& left, const Span& right) { return left.start < right.start; });
    if (spans.size() <= kMostPeriods) {
        return spans;
    }
    std::vector<Span> joined;
    for (const Span& span : spans) {
        if (!joined.empty() && span.start <= joined.back().end + kSmallestGap) {
            joined.back().end = std::max(joined.back().end, span.end);
        } else {
            joined.push_back(span);
        }
    }
    return joined;
}

/// What is said about content files, by their paths.
std::unordered_map<std::string, std::string> ReasonsOf(const std::vector<Diagnostic>& diagnostics)
{
    std::unordered_map<std::string, std::string> reasons;
    for (const Diagnostic& diagnostic : diagnostics) {
        if (diagnostic.subject == Diagnostic::Subject::kContentFile) {
            reasons.emplace(diagnostic.path, diagnostic.message);
        }
    }
    return reasons;
}

std::vector<FileLine> FilesOf(const readiness::Report& report, const std::vector<Diagnostic>& diagnostics)
{
    const std::unordered_map<std::string, std::string> reasons = ReasonsOf(diagnostics);
    std::vector<FileLine> lines;
    const readiness::Contents& contents = report.contents;
    std::set<std::pair<std::size_t, uVQMINT64>> seen; // a file may belong to several items
    for (const readiness::ContentItem& item : contents.items) {
        if (!seen.emplace(item.file, item.announced).second) {
            continue;
        }
        const readiness::ContentFile& file = contents.FileOf(item);
        FileLine line;
        line.name = EscapedForTerminal(file.name);
        line.size = item.announced;
        line.complete = contents.SizeMatches(item);
        if (const auto reason = reasons.find(contents.PathOf(item)); reason != reasons.end()) {
            line.reason = EscapedForTerminal(reason->second);
        } else if (!line.complete) {
            line.reason = EscapedForTerminal(file.problem); // its folder is missing, which is said once
        }
        lines.push_back(std::move(line));
    }
    std::stable_partition(lines.begin(), lines.end(), [](const FileLine& line) { return !line.reason.empty(); });
    return lines;
}

Group GroupOf(const _VQMPolicy& policy)
{
    return {policy.IsMaster,
            policy.NumOfPlayer,
            EscapedForTerminal(policy.IPAddrOfMaster),
            EscapedForTerminal(policy.IPAddr),
            EscapedForTerminal(policy.SubnetMask),
            EscapedForTerminal(policy.Gateway),
            EscapedForTerminal(policy.WirelessGroupName)};
}

} // namespace

Screen ScreenOf(const readiness::Report& report, const schedule::Moment& moment)
{
    const std::vector<Diagnostic> diagnostics = Explain(report);
    Screen screen;
    screen.outcome = OutcomeOf(report, diagnostics);
    screen.obstacle = ObstacleOf(diagnostics);
    screen.summary = SummaryLine(report, diagnostics);
    screen.haveSchedule = report.schedule.state == readiness::DocumentState::kLoaded;
    if (!screen.haveSchedule) {
        return screen;
    }
    const _VQMPolicy& policy = report.schedule.policy;
    std::optional<schedule::Change> next;
    screen.now = ProgrammeAt(policy, moment, &next);
    screen.next = ChangeOf(policy, moment, next);
    screen.periods = PeriodsOf(policy);
    screen.files = FilesOf(report, diagnostics);
    screen.completeFiles = static_cast<std::size_t>(
        std::count_if(screen.files.begin(), screen.files.end(), [](const FileLine& line) { return line.complete; }));
    screen.fileCount = screen.files.size();
    screen.files.erase(screen.files.begin() + static_cast<std::ptrdiff_t>(std::min(screen.fileCount, kMostFiles)),
                       screen.files.end());
    screen.group = GroupOf(policy);
    return screen;
}

} // namespace companion
