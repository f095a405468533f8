#pragma once

#include <future>
#include <string>

#include "Diagnostics/Lint/Report.h"
#include "Diagnostics/Readiness/Readiness.h"

namespace readiness {

/// Lints the schedule at `place` beside the library's own check, which takes about as long.
class ScheduleLint {
public:
    /// Starts at once, on a thread of its own where there can be one.
    ScheduleLint(std::string place, const schedule::Day& today);

    /// What was found: all of it counted, the first errors kept. Waits for it; call it once.
    lint::Report Take();

private:
    std::future<lint::Report> report_;
};

/// What the document is instead, if it has no element rsp: "is an HTML page"; otherwise empty.
std::string WhatItIsInstead(const lint::Report& findings);

/// "1 error and 2 warnings"; empty without any.
std::string CountsText(const lint::Counts& counts);

/// The command that shows the findings of the schedule.
std::string LintCommand(const Report& report);

} // namespace readiness
