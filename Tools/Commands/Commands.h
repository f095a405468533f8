#pragma once

#include "Tools/Commands/DesktopActions.h"

class CommandLine;

/// Each file of commands adds its branch to the command line.

void AddCheckCommand(CommandLine& line);
void AddConstantsCommands(CommandLine& line);
void AddExplainCommand(CommandLine& line);
void AddKeysCommands(CommandLine& line, WatchKeysAction watch);
void AddRemoteCommands(CommandLine& line, RemoteActions actions);
void AddScheduleCommands(CommandLine& line);
void AddSettingCommands(CommandLine& line, WatchSettingAction watch);
void AddStatusCommand(CommandLine& line, StatusAction show);
