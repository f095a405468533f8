#include "Diagnostics/Group/Difference.h"

#include <algorithm>
#include <iterator>
#include <tuple>
#include <utility>

namespace group {

namespace {

constexpr char kEffect[] = "the TVs do not play the same in sync";

} // namespace

void DifferenceList::Add(std::size_t document, Diagnostic here, std::optional<Diagnostic> there, Finding finding)
{
    if (IsFull()) {
        Count();
        return;
    }
    here.id = finding.id;
    here.severity = finding.severity;
    here.message = std::move(finding.message);
    here.expected = std::move(finding.expected);
    here.effect = kEffect;
    if (there) {
        there->id = finding.id;
        there->severity = Severity::kNote;
        there->message = std::move(finding.there);
    }
    differences_.push_back({std::move(here), std::move(there), document});
}

void DifferenceList::Take(DifferenceList&& other)
{
    std::move(other.differences_.begin(), other.differences_.end(), std::back_inserter(differences_));
    notKept_ += other.notKept_;
}

std::vector<Difference> DifferenceList::TakeSorted()
{
    const auto rank = [](const Difference& each) {
        return std::tie(each.document, each.here.line, each.here.column, each.here.id, each.here.message);
    };
    std::sort(differences_.begin(), differences_.end(),
              [&](const Difference& left, const Difference& right) { return rank(left) < rank(right); });
    return std::move(differences_);
}

} // namespace group
