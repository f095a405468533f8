#include "Diagnostics/Group/Group.h"

#include <utility>

#include "Diagnostics/Group/Document.h"
#include "Diagnostics/Group/Facts.h"
#include "Diagnostics/Group/Periods.h"

namespace group {

Report Compare(const std::vector<std::string>& paths)
{
    Report report;
    DifferenceList differences;
    std::vector<Facts> facts;
    const Document first(paths.front());
    facts.emplace_back(first);
    report.documents.push_back(first.Name());
    for (std::size_t number = 1; number < paths.size(); ++number) {
        const Document other(paths[number]);
        facts.emplace_back(other);
        report.documents.push_back(other.Name());
        ComparePeriods(first, other, number, differences);
    }
    // In a separate list, because the first one may be full of differences between items.
    DifferenceList ofFacts;
    CompareFacts(facts, ofFacts);
    differences.Take(std::move(ofFacts));
    report.notKept = differences.NotKept();
    report.differences = differences.TakeSorted();
    return report;
}

} // namespace group
