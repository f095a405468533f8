#include "Tools/Commands/ScheduleCommands.h"

#include "Tools/Commands/Commands.h"

void AddScheduleCommands(CommandLine& line)
{
    CLI::App& group = line.AddGroup("schedule", "Look into schedule documents");
    AddScheduleShowCommand(line, group);
    AddScheduleAtCommand(line, group);
    AddScheduleTimelineCommand(line, group);
    AddScheduleLintCommand(line, group);
    AddScheduleGroupCommand(line, group);
    AddScheduleSizesCommand(line, group);
}
