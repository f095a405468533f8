#pragma once

#include <cstddef>
#include <string>

#include "Data/VQMScheduleRecords.h"
#include "Diagnostics/Group/Places.h"
#include "Diagnostics/Text/Diagnostic.h"

namespace group {

/// One TV's document: what the library reads from it, and where that stands.
class Document {
public:
    /// Reads a document as `schedule::ReadPolicyFile` does, and throws what that throws.
    explicit Document(const std::string& path);

    const std::string& Name() const { return name_; }
    const _VQMPolicy& Policy() const { return policy_; }
    const Places& AllPlaces() const { return places_; }

    /// A diagnostic about a place of this document, without what it says. Its path is the document's name.
    Diagnostic At(const Place& place) const;
    Diagnostic At(Field field) const { return At(places_.fields[static_cast<std::size_t>(field)]); }

private:
    std::string name_;
    _VQMPolicy policy_;
    lint::DocumentWindow window_;
    Places places_;
};

} // namespace group
