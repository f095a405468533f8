#pragma once

#include <string>

#include "Diagnostics/Readiness/Readiness.h"

namespace readiness {

/// A constants file that names a schedule.
std::string NewConstants(const std::string& scheduleFile);

/// The name that a new constants file would have for the schedule: that of the only document in the TV's
/// directory, or else "schedule.xml".
std::string NameForSchedule(const Places& places);

} // namespace readiness
