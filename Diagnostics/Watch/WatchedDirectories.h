#pragma once

#include <set>
#include <string>

#include "Diagnostics/Readiness/Readiness.h"

/// The directories whose files decide what a report says: those of constants, schedule and media. A change
/// of a file behind a link, or on a network disk, is not noticed there, and midnight comes without one: who
/// watches them checks once a minute besides.
std::set<std::string> WatchedDirectories(const readiness::Report& report);
