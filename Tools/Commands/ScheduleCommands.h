#pragma once

#include "Tools/CommandLine.h"

/// Each command below "schedule" adds itself to the group.

void AddScheduleAtCommand(CommandLine& line, CLI::App& group);
void AddScheduleGroupCommand(CommandLine& line, CLI::App& group);
void AddScheduleLintCommand(CommandLine& line, CLI::App& group);
void AddScheduleShowCommand(CommandLine& line, CLI::App& group);
void AddScheduleSizesCommand(CommandLine& line, CLI::App& group);
void AddScheduleTimelineCommand(CommandLine& line, CLI::App& group);
