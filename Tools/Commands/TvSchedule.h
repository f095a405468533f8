#pragma once

#include <string>

#include <CLI/CLI.hpp>

#include "Diagnostics/Readiness/Places.h"

/// Adds --root and --constants, which say whose schedule a command takes that is given none.
void AddTvScheduleOptions(CLI::App& command, readiness::Places& places);

/// `given`, or the path of the TV's own schedule when that is empty. Throws `CommandError` when nothing
/// names one, or when both were given.
std::string GivenOrTvSchedule(const std::string& given, const readiness::Places& places);
