#include "Diagnostics/Group/Document.h"

#include <stdexcept>
#include <utility>

#include "Diagnostics/Programme/PolicyFile.h"

namespace group {

namespace {

bool Fits(const _VQMPolicy& policy, const Places& places)
{
    std::size_t index = 0;
    for (const _VQMSchdule& period : policy.listSchedule) {
        if (index == places.periods.size() || places.periods[index].items.size() != period.listContents.size()) {
            return false;
        }
        ++index;
    }
    return index == places.periods.size();
}

} // namespace

Document::Document(const std::string& path)
{
    schedule::PolicyFile file = schedule::ReadPolicyFile(path, &window_.Bytes());
    name_ = std::move(file.name);
    policy_ = std::move(file.policy);
    places_ = FindPlaces(window_);
    if (!Fits(policy_, places_)) {
        throw std::logic_error("the places of '" + name_ + "' are not those of what was read");
    }
}

Diagnostic Document::At(const Place& place) const
{
    Diagnostic diagnostic;
    diagnostic.path = name_;
    diagnostic.line = place.position.line;
    diagnostic.column = place.position.column;
    diagnostic.source = window_.SnippetAt(place.position, place.size);
    diagnostic.endColumn = diagnostic.column + CharactersIn(diagnostic.source);
    return diagnostic;
}

} // namespace group
