#pragma once

#include <string>

#include "Diagnostics/Calendar/Clock.h"
#include "Diagnostics/Programme/Programme.h"
#include "Diagnostics/Readiness/Readiness.h"
#include "Diagnostics/Status/ApplicationStatus.h"
#include "Diagnostics/Status/LaunchStatus.h"
#include "Diagnostics/Status/PopupStatus.h"
#include "Diagnostics/Status/SettingStatus.h"

/// Why does this TV not play, or launch nothing? Each section of the report is collected by itself:
/// what cannot be had says why, and the others stand.
namespace status {

struct Report {
    std::string root; ///< files of another TV lie below it: what runs there cannot be asked; empty: this machine
    std::string applicationId;
    SettingStatus setting;
    ApplicationStatus application;
    LaunchStatus launch;
    PopupStatus popups;
    readiness::Report content;
    schedule::Clock clock;
    std::string zoneVariable; ///< what TZ holds; empty: the machine's zone counts
};

/// One thread only; takes a few seconds at the most where a server does not answer. Throws
/// `std::runtime_error` when the root of `places` cannot be entered.
Report Collect(const readiness::Places& places);

/// What the schedule says at the report's time; points into the report. Only for a loaded schedule.
schedule::Programme ProgrammeNow(const Report& report);

/// The same for the moment of the next change.
schedule::Programme ProgrammeAfter(const Report& report, const schedule::Change& change);

} // namespace status
