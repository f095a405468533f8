#pragma once

#include <string>

#include "Diagnostics/Lint/Report.h"
#include "Diagnostics/Readiness/Readiness.h"

namespace readiness {

/// What the linter finds in the schedule: all of it counted, the first errors kept. Empty for a schedule
/// that is not loaded.
lint::Report LintSchedule(const Schedule& schedule, const schedule::Day& today);

/// What the document is instead, if it has no element rsp: "is an HTML page"; otherwise empty.
std::string WhatItIsInstead(const lint::Report& findings);

/// "1 error and 2 warnings"; empty without any.
std::string CountsText(const lint::Counts& counts);

/// The command that shows the findings of the schedule.
std::string LintCommand(const Report& report);

} // namespace readiness
