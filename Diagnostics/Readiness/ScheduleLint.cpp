#include "Diagnostics/Readiness/ScheduleLint.h"

#include <algorithm>
#include <cctype>
#include <string_view>
#include <system_error>
#include <utility>

#include "Diagnostics/Lint/Lint.h"
#include "Diagnostics/Readiness/Background.h"
#include "Diagnostics/Readiness/DocumentFile.h"
#include "Diagnostics/Text/InputFile.h"
#include "Diagnostics/Text/Words.h"

namespace readiness {

namespace {

/// Shown with the answer; an author who has made more errors runs the linter itself.
constexpr std::size_t kMostErrors = 5;

bool BeginsLike(std::string_view text, std::string_view lowerCase)
{
    return text.size() >= lowerCase.size() &&
           std::equal(lowerCase.begin(), lowerCase.end(), text.begin(), [](char expected, char found) {
               return std::tolower(static_cast<unsigned char>(found)) == expected;
           });
}

lint::Report LintFile(const std::string& place, const schedule::Day& today)
{
    // The library accepts plain files only, and anything else may have no end.
    if (Examine(place).state != DocumentState::kLoaded) {
        return {};
    }
    lint::Options options;
    options.today = today;
    options.maxFindings = kMostErrors;
    lint::Report report;
    try {
        const InputFile file(place);
        report = lint::Lint([&file](char* buffer, std::size_t size) { return file.Read(buffer, size); }, options);
    } catch (const std::system_error&) {
        return {}; // it was there a moment ago: the check says that files have changed
    }
    const auto isNoError = [](const Diagnostic& finding) { return finding.severity != Severity::kError; };
    report.findings.erase(std::remove_if(report.findings.begin(), report.findings.end(), isNoError),
                          report.findings.end());
    return report;
}

} // namespace

ScheduleLint::ScheduleLint(std::string place, const schedule::Day& today)
    : report_(InBackground([place = std::move(place), today] { return LintFile(place, today); }))
{
}

lint::Report ScheduleLint::Take()
{
    return report_.get();
}

std::string WhatItIsInstead(const lint::Report& findings)
{
    for (const Diagnostic& finding : findings.findings) {
        if (finding.id != lint::NameOf(lint::Rule::kStateMissing)) {
            continue;
        }
        // The finding is about the outermost element, or about an rsp without a state.
        const std::string_view element = std::string_view(finding.source.text).substr(finding.source.start);
        if (BeginsLike(element, "<html")) {
            return "is an HTML page";
        }
        return BeginsLike(element, "<rsp") ? "" : "has no element rsp";
    }
    return "";
}

std::string CountsText(const lint::Counts& counts)
{
    if (counts.errors == 0) {
        return counts.warnings == 0 ? "" : Counted(counts.warnings, "warning");
    }
    return Counted(counts.errors, "error") +
           (counts.warnings == 0 ? "" : " and " + Counted(counts.warnings, "warning"));
}

std::string LintCommand(const Report& report)
{
    return report.compiledIn ? "vqmctl schedule lint" : "vqmctl schedule lint " + Quoted(report.schedule.place);
}

} // namespace readiness
