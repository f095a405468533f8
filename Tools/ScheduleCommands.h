#pragma once

#include "Tools/CommandLine.h"

/// Each command below "schedule" adds itself to the group.

void AddScheduleLintCommand(CommandLine& line, CLI::App& group);
