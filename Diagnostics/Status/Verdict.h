#pragma once

#include <string>
#include <vector>

#include "Diagnostics/Status/Report.h"
#include "Diagnostics/Text/Diagnostic.h"

namespace status {

/// What the report comes to. Each list is in the order in which one would look into it.
struct Verdict {
    std::vector<Diagnostic> launch;  ///< why a tool key launches nothing
    std::vector<Diagnostic> play;    ///< why nothing plays
    std::vector<Diagnostic> meaning; ///< errors of the schedule: something else plays than what is written
    std::vector<Diagnostic> unknown; ///< what cannot be known from here; it does not stand in the way
    std::vector<Diagnostic> remarks; ///< worth knowing

    bool NothingStandsInTheWay() const { return launch.empty() && play.empty(); }
    bool HasErrors() const { return !NothingStandsInTheWay() || !meaning.empty(); }
};

Verdict Judge(const Report& report);

/// Whether it will launch and play, or the gravest reason why not, in one sentence. Not escaped.
std::string Sentence(const Report& report, const Verdict& verdict);

} // namespace status
