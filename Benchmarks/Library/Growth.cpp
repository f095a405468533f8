// What users can make long, one dimension at a time: the cost of each unit has to stay what it is.

#include <memory>
#include <string>
#include <vector>

#include "Benchmarks/Library/Work.h"
#include "Diagnostics/Lint/Lint.h"
#include "Diagnostics/Readiness/Render.h"
#include "Diagnostics/Text/Suggestions.h"
#include "Diagnostics/Text/Table.h"

namespace {

constexpr std::size_t kRows = 1000;
constexpr std::size_t kWordLength = 60;

} // namespace

Work LintAttributes(std::size_t size)
{
    auto document = std::make_shared<std::string>("<rsp state='ok'");
    for (std::size_t attribute = 0; attribute < size; ++attribute) {
        *document += " a" + std::to_string(attribute) + "=''";
    }
    *document += "/>";
    return {[document] { lint::Lint(*document, lint::Options()); }, static_cast<double>(size)};
}

Work ShowLongCell(std::size_t size)
{
    const std::string cell(size, 'x');
    return {[cell] {
                Table table({Table::Align::kLeft});
                table.Add({cell, "last"});
                for (std::size_t row = 0; row < kRows; ++row) {
                    table.Add({"short", "last"});
                }
                table.Text();
            },
            static_cast<double>(size)};
}

Work SuggestForLongName(std::size_t size)
{
    const std::string name(size, 'x');
    const std::vector<std::string> candidates(kRows, name);
    return {[=] { Suggest(name, candidates); }, static_cast<double>(size)};
}

Work SuggestAmongMany(std::size_t size)
{
    std::vector<std::string> candidates;
    for (std::size_t candidate = 0; candidate < size; ++candidate) {
        const std::string number = std::to_string(candidate);
        candidates.push_back(std::string(kWordLength - number.size(), 'x') + number);
    }
    return {[candidates] { Suggest(std::string(kWordLength, 'y'), candidates); }, static_cast<double>(size)};
}

Work RenderCheckAsJson(std::size_t size)
{
    readiness::Report report;
    report.constants.path = "constants.xml";
    report.contents.directory = "/opt/media/";
    for (std::size_t item = 0; item < size; ++item) {
        report.contents.files.push_back({ItemName(item) + ".mp4"});
        report.contents.items.push_back({0, item, 1});
    }
    return {[report] { WriteJson(report, std::nullopt, [](std::string_view) { return true; }); },
            static_cast<double>(size)};
}
