#include "Tests/Diagnostics/Lint/Documents.h"

#include <fstream>
#include <stdexcept>

namespace {

/// The documentation shows a zero byte by its symbol.
std::string WithZeroBytes(std::string text)
{
    constexpr std::string_view kSymbol = "␀";
    for (std::size_t at = text.find(kSymbol); at != std::string::npos; at = text.find(kSymbol, at)) {
        text.replace(at, kSymbol.size(), 1, '\0');
    }
    return text;
}

} // namespace

std::string GoodDocumentWith(const std::string& what, const std::string& replacement)
{
    std::string document = kGoodDocument;
    const std::size_t place = document.find(what);
    if (place == std::string::npos) {
        throw std::logic_error("no " + what);
    }
    return document.replace(place, what.size(), replacement);
}

lint::Options TestOptions()
{
    lint::Options options;
    options.today = {2026, 6, 1};
    return options;
}

std::vector<std::string> PlacesIn(std::string_view document)
{
    std::vector<std::string> places;
    for (const Diagnostic& finding : lint::Lint(document, TestOptions()).findings) {
        places.push_back(std::to_string(finding.line) + ":" + std::to_string(finding.column) + "-" +
                         std::to_string(finding.endColumn) + " " + finding.id);
    }
    return places;
}

std::vector<RuleSection> RuleSections()
{
    std::vector<RuleSection> sections;
    std::string clean; // stands before the sections, for those that do not show their own
    std::ifstream file(VQM_LINT_RULES);
    std::string* block = nullptr;
    bool expectGood = false;
    for (std::string line; std::getline(file, line);) {
        if (line.rfind("### `", 0) == 0) {
            const std::size_t end = line.find('`', 5);
            sections.push_back({line.substr(5, end - 5), line.substr(end + 3, line.size() - end - 4), "", "", ""});
            expectGood = false;
        } else if (line == "Bad:" || line == "Good:") {
            expectGood = line == "Good:";
        } else if (line == "```xml") {
            block = sections.empty() ? &clean : expectGood ? &sections.back().good : &sections.back().bad;
        } else if (line == "```text" && !sections.empty()) {
            block = &sections.back().output;
        } else if (line == "```") {
            block = nullptr;
        } else if (block != nullptr) {
            *block += WithZeroBytes(line) + "\n";
        }
    }
    for (RuleSection& section : sections) {
        if (section.good.empty()) {
            section.good = clean;
        }
    }
    return sections;
}
