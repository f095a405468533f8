#include "Tools/ScheduleCommands.h"

#include "Tools/Commands.h"

void AddScheduleCommands(CommandLine& line)
{
    CLI::App& group = line.AddGroup("schedule", "Look into schedule documents");
    AddScheduleLintCommand(line, group);
}
