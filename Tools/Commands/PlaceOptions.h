#pragma once

#include <CLI/CLI.hpp>

#include "Diagnostics/Readiness/Places.h"

/// Options that say where to look. `places` outlives the command line.

/// Adds --root.
void AddRootOption(CLI::App& command, readiness::Places& places);

/// Adds --constants.
void AddConstantsOption(CLI::App& command, readiness::Places& places);

/// Adds --root, --constants, --schedule and --media.
void AddPlaceOptions(CLI::App& command, readiness::Places& places);

/// Throws `CommandError` for places that exclude one another.
void RequirePlausible(const readiness::Places& places);
