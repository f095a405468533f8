#include "Tests/Fuzz/LintRepairs.h"

#include <cstdio>
#include <vector>

#include "Data/VQMScheduleContainer.h"
#include "Diagnostics/Edit/ApplyEdits.h"
#include "Diagnostics/Lint/Repairs.h"
#include "Tests/Fuzz/LintAgreement.h"
#include "Tests/Fuzz/PolicyText.h"
#include "VQMSerialize/VQMXMLSerialize.h"

namespace {

using lint::Rule;

constexpr Rule kMendable[] = {Rule::kEncodingDeclaredWrongly, Rule::kTimeWithoutSeconds, Rule::kItemCountMismatch,
                              Rule::kTotalSizeMismatch};

lint::Options OptionsOf()
{
    lint::Options options;
    options.today = {2026, 6, 1};
    return options;
}

struct Tally {
    std::uint64_t findings = 0;
    std::uint64_t repairs = 0;
};

Tally TallyOf(Rule rule, std::string_view document, lint::Options options)
{
    for (const std::string& name : lint::RuleNames()) {
        if (const Rule other = *lint::FindRule(name); other != rule) {
            options.ignored.insert(other);
        }
    }
    const lint::Report report = lint::Lint(document, options);
    return {report.counts.errors + report.counts.warnings + report.counts.notes, report.fixes.size()};
}

bool Parse(std::string_view document, _VQMPolicy& policy)
{
    CVQMScheduleContainer container;
    CVQMXMLSerialize serializer;
    const bool parsed = serializer.Create() && serializer.Deserialize(std::string(document).c_str(), &container);
    container.GetSturcture(&policy);
    return parsed;
}

/// Not by the code that applied the edits: each byte is looked for from the front.
std::string FindOtherChange(std::string_view before, std::string_view after, const std::vector<Edit>& edits)
{
    std::size_t old = 0;
    std::size_t now = 0;
    for (const Edit& edit : edits) {
        for (; old < edit.offset; ++old, ++now) {
            if (now >= after.size() || before[old] != after[now]) {
                return "byte " + std::to_string(old) + " has changed";
            }
        }
        if (after.substr(now, edit.newText.size()) != edit.newText) {
            return "byte " + std::to_string(old) + " is not " + edit.newText;
        }
        old += edit.oldText.size();
        now += edit.newText.size();
    }
    return before.substr(old) == after.substr(now) ? "" : "the end has changed";
}

/// "9:30" must have become a text that the library reads as 9, 30 and 0.
bool IsSameTime(const Edit& edit)
{
    int hour = 0;
    int minute = 0;
    int end = 0;
    if (std::sscanf(edit.oldText.c_str(), "%9d:%2d%n", &hour, &minute, &end) != 2 ||
        static_cast<std::size_t>(end) != edit.oldText.size()) {
        return false;
    }
    _VQMTime time;
    CVQMScheduleContainer().ConvertHHMMSSTimeToVQMTime(edit.newText, time);
    return time.nHour == hour && time.nMinute == minute && time.nSecond == 0;
}

std::string FindWrongValue(std::string_view document, std::string_view mended)
{
    _VQMPolicy before;
    _VQMPolicy after;
    if (!Parse(mended, after)) {
        // What the parser rejects for another reason stays rejected: a repair leaves that to the author.
        return Parse(document, before) ? "the parser rejects the mended document" : "";
    }
    if (!Parse(document, before)) {
        return "the parser rejected the document for more than its encoding";
    }
    std::uint64_t items = 0;
    std::uint64_t total = 0;
    auto mendedPeriod = after.listSchedule.begin();
    for (_VQMSchdule& period : before.listSchedule) {
        for (const _VQMContentInfo& content : period.listContents) {
            ++items;
            total += content.nSize;
        }
        if (mendedPeriod == after.listSchedule.end()) {
            return "a period is gone";
        }
        period.stStartTime = mendedPeriod->stStartTime;
        period.stEndTime = mendedPeriod->stEndTime;
        ++mendedPeriod;
    }
    const bool sameCount = before.nItemCount == after.nItemCount;
    const bool sameTotal = before.nTotalSize == after.nTotalSize;
    if ((!sameCount && static_cast<std::uint64_t>(after.nItemCount) != items) ||
        (!sameTotal && after.nTotalSize != total)) {
        return "a total is wrong";
    }
    before.nItemCount = after.nItemCount;
    before.nTotalSize = after.nTotalSize;
    return Describe(before) == Describe(after) ? "" : "another value has changed";
}

} // namespace

std::string FindRepairFault(std::string_view document)
{
    const lint::Options options = OptionsOf();
    const std::vector<Edit> edits = SortedEdits(document, lint::FindRepairs(document, options));
    if (edits.empty()) {
        return "";
    }
    const std::string mended = ApplyEdits(document, edits);
    if (std::string change = FindOtherChange(document, mended, edits); !change.empty()) {
        return change;
    }
    lint::Options asMeant = options;
    asMeant.asUtf8 = TallyOf(Rule::kEncodingDeclaredWrongly, document, options).repairs > 0;
    for (const Rule rule : kMendable) {
        const Tally before = TallyOf(rule, document, asMeant);
        if (TallyOf(rule, mended, options).findings != before.findings - before.repairs) {
            return std::string("the mended document has findings of ") + NameOf(rule);
        }
    }
    for (const lint::Fix& fix : lint::Lint(document, asMeant).fixes) {
        if (fix.rule == Rule::kTimeWithoutSeconds && !IsSameTime(fix.edit)) {
            return "another time: " + fix.edit.newText;
        }
    }
    if (asMeant.asUtf8) {
        return FindDisagreement(mended); // the parser has never read the document as it was meant
    }
    return FindWrongValue(document, mended);
}
