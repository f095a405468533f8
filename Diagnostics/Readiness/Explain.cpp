#include "Diagnostics/Readiness/Readiness.h"

#include <algorithm>
#include <set>
#include <utility>

#include "Diagnostics/Readiness/ScheduleLint.h"
#include "Diagnostics/Text/Suggestions.h"
#include "Diagnostics/Text/Words.h"

namespace readiness {

namespace {

/// Collects what is to be said about one report.
class Explanation {
public:
    explicit Explanation(const Report& report) : report_(report), ready_(report.verdict.Ready()) {}

    std::vector<Diagnostic> Take();

private:
    /// An error, unless the TV is ready: then it has not mattered.
    void AddProblem(const char* id, std::string message, const std::string& path)
    {
        Add(id, ready_ ? Severity::kNote : Severity::kError, std::move(message), path);
    }
    void AddNote(const char* id, std::string message, const std::string& path)
    {
        Add(id, Severity::kNote, std::move(message), path);
    }
    /// An error even on a TV that is ready: it plays nothing.
    void AddFault(const char* id, std::string message, const std::string& path)
    {
        Add(id, Severity::kError, std::move(message), path);
    }
    void Add(const char* id, Severity severity, std::string message, const std::string& path)
    {
        Diagnostic diagnostic;
        diagnostic.id = id;
        diagnostic.severity = severity;
        diagnostic.blocking = severity == Severity::kError;
        diagnostic.message = std::move(message);
        diagnostic.path = path;
        diagnostic.subject = subject_;
        diagnostics_.push_back(std::move(diagnostic));
    }

    void ExplainConstants();
    void ExplainScheduleFile();
    void ExplainSchedule();
    void ExplainDocument();
    void ExplainKind();
    void AddLintErrors();
    void ExplainTotals();
    void ExplainContents();
    void ExplainItem(const ContentItem& item);
    void ExplainMatchingItem(const ContentItem& item);
    void ExplainUser();
    void ExplainChange();

    const Report& report_;
    bool ready_;
    Diagnostic::Subject subject_ = Diagnostic::Subject::kGeneral;
    std::vector<Diagnostic> diagnostics_;
};

std::string PerhapsMeant(const std::string& name, const std::vector<std::string>& there)
{
    const std::vector<std::string> close = Suggest(name, there);
    return close.empty() ? "" : "; " + QuotedList(close) + (close.size() == 1 ? " is there" : " are there");
}

std::vector<Diagnostic> Explanation::Take()
{
    ExplainConstants();
    if (!report_.verdict.ran) {
        AddProblem("not-checked", "the check did not run: " + report_.verdict.problem, report_.schedule.path);
    } else {
        ExplainSchedule();
    }
    if (report_.schedule.state == DocumentState::kLoaded) {
        ExplainDocument();
        ExplainTotals();
        ExplainContents();
        AddLintErrors();
    }
    ExplainUser();
    ExplainChange();
    return std::move(diagnostics_);
}

void Explanation::ExplainConstants()
{
    const Constants& constants = report_.constants;
    const std::string file = "the constants file " + Quoted(constants.path) + " ";
    const std::string consequence =
        constants.ScheduleFile() == nullptr ? "; without it the TV does not know the name of its schedule" : "";
    switch (constants.state) {
    case DocumentState::kMissing:
        AddProblem("constants-missing", file + constants.problem + consequence, constants.path);
        break;
    case DocumentState::kUnreadable:
        AddProblem("constants-unreadable", file + constants.problem + consequence, constants.path);
        break;
    case DocumentState::kNotWellFormed: {
        const std::string message = file + constants.problem + "; only what stands before that place counts";
        if (constants.ScheduleFile() == nullptr) {
            AddProblem("constants-not-well-formed", message, constants.path);
        } else {
            AddNote("constants-not-well-formed", message, constants.path);
        }
        break;
    }
    case DocumentState::kLoaded:
    case DocumentState::kNotNeeded:
        break;
    }
    ExplainScheduleFile();
}

void Explanation::ExplainScheduleFile()
{
    const Constants& constants = report_.constants;
    const std::string* const value = constants.ScheduleFile();
    const bool loaded = constants.state == DocumentState::kLoaded || constants.state == DocumentState::kNotWellFormed;
    if (!loaded || (value != nullptr && !value->empty())) {
        return;
    }
    if (value != nullptr) {
        AddProblem("schedule-file-empty", "the constant ScheduleFile is empty; expected the file name of the schedule",
                   constants.path);
        return;
    }
    std::vector<std::string> keys;
    for (const auto& entry : constants.values) {
        keys.push_back(entry.first);
    }
    std::string message = "the constants file " + Quoted(constants.path) + " has no constant ScheduleFile";
    message += PerhapsMeant(kScheduleFile, keys);
    if (constants.values.count("") != 0) {
        message += "; it has a value without a name: key must stand before value";
    }
    AddProblem("no-schedule-file", message, constants.path);
}

void Explanation::ExplainSchedule()
{
    const Schedule& schedule = report_.schedule;
    // Without a name for the schedule, the path is the directory itself. The missing name has been explained.
    if (schedule.state == DocumentState::kLoaded || schedule.path == schedule.directory) {
        return;
    }
    std::string message = "the schedule " + Quoted(schedule.path) + " " + schedule.problem;
    if (schedule.state == DocumentState::kMissing) {
        message += schedule.lookAlike.empty() ? "" : "; " + schedule.lookAlike;
        AddProblem("schedule-missing", message, schedule.path);
    } else if (schedule.state == DocumentState::kUnreadable) {
        AddProblem("schedule-unreadable", message, schedule.path);
    } else {
        AddProblem("schedule-not-well-formed", message, schedule.path);
    }
}

void Explanation::ExplainDocument()
{
    const Schedule& schedule = report_.schedule;
    if (schedule.policy.bError && WhatItIsInstead(report_.findings).empty()) {
        AddNote("state-not-ok", "the schedule's state is not \"ok\"; the check does not ask for it", schedule.path);
    }
    const std::string day = schedule::DayText(schedule::ExpirationOf(schedule.policy));
    if (schedule.expiry == schedule::Expiry::kExpired) {
        AddNote("expired", "the schedule has expired on " + day + "; the check does not look at the date",
                schedule.path);
    } else if (schedule.expiry == schedule::Expiry::kImpossible) {
        AddNote("expiration-no-day",
                "the schedule expires on " + day + ", which is not a day; the check does not look at it",
                schedule.path);
    }
    ExplainKind();
}

/// The library accepts any XML document, and finds a schedule without items complete.
void Explanation::ExplainKind()
{
    const Schedule& schedule = report_.schedule;
    const std::string instead = WhatItIsInstead(report_.findings);
    if (!instead.empty()) {
        AddFault("not-a-schedule",
                 "the file " + Quoted(schedule.path) + " " + instead + "; copy the schedule document in its place",
                 schedule.path);
    } else if (report_.contents.items.empty()) {
        AddFault("no-files", "the schedule names no file: nothing is missing, and nothing plays", schedule.path);
    }
}

void Explanation::AddLintErrors()
{
    for (Diagnostic finding : report_.findings.findings) {
        finding.path = report_.schedule.path;
        finding.message = "line " + std::to_string(finding.line) + ", column " + std::to_string(finding.column) + ": " +
                          finding.message + "; " + finding.effect;
        diagnostics_.push_back(std::move(finding));
    }
}

void Explanation::ExplainTotals()
{
    const _VQMPolicy& policy = report_.schedule.policy;
    const Contents& contents = report_.contents;
    const auto items = static_cast<long long>(contents.items.size());
    // 0 is also what a document without the number gives.
    if (policy.nItemCount != 0 && policy.nItemCount != items) {
        AddNote("item-count",
                "item_count is " + std::to_string(policy.nItemCount) + ", but there " + (items == 1 ? "is " : "are ") +
                    Counted(contents.items.size(), "item") + "; the check goes by the items",
                report_.schedule.path);
    }
    if (policy.nTotalSize != 0 && policy.nTotalSize != contents.announcedBytes) {
        AddNote("total-size",
                "total_size is " + std::to_string(policy.nTotalSize) + ", but the items' sizes add up to " +
                    std::to_string(contents.announcedBytes) + "; the check goes by the items",
                report_.schedule.path);
    }
}

void Explanation::ExplainContents()
{
    const Contents& contents = report_.contents;
    if (!contents.directoryPresent && contents.closedFolder.empty() && !contents.items.empty()) {
        AddProblem("media-directory-missing",
                   "the media directory " + Quoted(contents.directory) + " " + contents.directoryProblem +
                       "; none of " + Counted(contents.items.size(), "item") + " can be there",
                   contents.directory);
    }
    if (!contents.closedFolder.empty()) {
        AddProblem("media-directory-closed",
                   "you may not enter the directory " + Quoted(contents.closedFolder) +
                       "; whether the application may is not known: ask as the user that it runs as, or as root",
                   contents.closedFolder);
    }
    subject_ = Diagnostic::Subject::kContentFile;
    std::set<std::pair<std::size_t, uVQMINT64>> told; // a file may belong to several items
    for (const ContentItem& item : contents.items) {
        const ContentFile& file = contents.FileOf(item);
        // A closed or missing directory has been reported once for all its files.
        const bool isTold = file.kind == FileKind::kNotExamined && !contents.closedFolder.empty();
        const bool lacksDirectory = !contents.directoryPresent && file.kind == FileKind::kMissing;
        if (!isTold && !lacksDirectory && (!contents.SizeMatches(item) || !file.readable)) {
            if (told.emplace(item.file, item.announced).second) {
                ExplainItem(item);
            }
        }
    }
    subject_ = Diagnostic::Subject::kGeneral;
    if (contents.freeBytes && *contents.freeBytes < contents.missingBytes) {
        AddNote("disk-full",
                BytesText(contents.missingBytes) + " are to be copied, and the disk has room for " +
                    BytesText(*contents.freeBytes),
                contents.directory);
    }
}

void Explanation::ExplainItem(const ContentItem& item)
{
    const Contents& contents = report_.contents;
    if (contents.SizeMatches(item)) {
        ExplainMatchingItem(item);
        return;
    }
    const ContentFile& file = contents.FileOf(item);
    const std::string path = contents.PathOf(item);
    const std::string name = Quoted(file.name);
    const std::string announced = "the schedule announces " + std::to_string(item.announced);
    const std::string announcedBytes = "; the schedule announces " + Counted(item.announced, "byte");
    switch (file.kind) {
    case FileKind::kMissing: {
        std::string message = name + " " + file.problem + announcedBytes;
        const auto other = contents.lookAlikes.find(file.name);
        if (other != contents.lookAlikes.end()) {
            message += "; " + other->second;
        }
        AddProblem("file-missing", message, path);
        break;
    }
    case FileKind::kNotExamined:
        AddProblem("file-not-examined",
                   name + " cannot be examined: " + file.problem + "; it counts as 0 bytes, " + announced, path);
        break;
    case FileKind::kDirectory:
    case FileKind::kOther:
        AddProblem("file-of-another-kind", name + " " + file.problem + announcedBytes, path);
        break;
    case FileKind::kFile:
        AddProblem("file-size", name + " has " + Counted(file.size, "byte") + "; " + announced, path);
        break;
    }
}

void Explanation::ExplainMatchingItem(const ContentItem& item)
{
    const ContentFile& file = report_.contents.FileOf(item);
    const std::string path = report_.contents.PathOf(item);
    const std::string name = Quoted(file.name);
    switch (file.kind) {
    case FileKind::kMissing:
    case FileKind::kNotExamined:
        AddNote("size-0", name + " is announced with 0 bytes: it counts as present, although it is missing", path);
        break;
    case FileKind::kDirectory:
    case FileKind::kOther:
        AddNote("file-of-another-kind", name + " " + file.problem + "; it counts, for its size is the announced one",
                path);
        break;
    case FileKind::kFile:
        AddNote("file-unreadable",
                name + " has its size, but cannot be read here: " + file.problem + "; the check does not try to", path);
        break;
    }
}

void Explanation::ExplainUser()
{
    for (const std::string& path : report_.closedToOthers) {
        AddNote("only-for-root",
                "this is root's answer: " + Quoted(path) +
                    " is closed to other users, and the application may be one of them",
                path);
    }
}

/// The check and the examination look at the files one after the other, and the files may change in between.
void Explanation::ExplainChange()
{
    const Verdict& verdict = report_.verdict;
    const bool parsed = report_.schedule.state == DocumentState::kLoaded;
    const bool complete = report_.contents.complete == report_.contents.items.size();
    if (verdict.ran && (verdict.haveSchedule != parsed || (parsed && verdict.haveContents != complete))) {
        AddNote("changed-meanwhile", "files changed while they were looked at: check again", report_.schedule.path);
    }
}

} // namespace

std::vector<Diagnostic> Explain(const Report& report)
{
    return Explanation(report).Take();
}

Outcome OutcomeOf(const Report& report, const std::vector<Diagnostic>& diagnostics)
{
    if (!report.verdict.ran) {
        return Outcome::kNotChecked;
    }
    const bool blocked = std::any_of(diagnostics.begin(), diagnostics.end(),
                                     [](const Diagnostic& diagnostic) { return diagnostic.blocking; });
    if (!report.verdict.Ready() || blocked) {
        return Outcome::kPlaysNothing;
    }
    if (report.findings.counts.errors > 0) {
        return Outcome::kNotAsMeant;
    }
    return report.findings.counts.warnings > 0 ? Outcome::kPerhapsNotMeant : Outcome::kAsMeant;
}

} // namespace readiness
