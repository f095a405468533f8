#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "Diagnostics/Group/Difference.h"
#include "Diagnostics/Group/Document.h"

namespace group {

/// What is compared of each document besides its periods, and stays when the document has gone.
struct Facts {
    explicit Facts(const Document& document);

    const std::string& Value(Field field) const { return values[static_cast<std::size_t>(field)]; }
    const Diagnostic& At(Field field) const { return places[static_cast<std::size_t>(field)]; }

    std::array<std::string, kFields> values; ///< as the library reads them
    std::array<Diagnostic, kFields> places;
    bool isMaster = false;
    int players = 0;
};

/// Adds what does not fit: the master, the project, the addresses, the number of players and the subnet.
void CompareFacts(const std::vector<Facts>& all, DifferenceList& differences);

} // namespace group
