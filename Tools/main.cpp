#include <csignal>

#include "Tools/CommandLine.h"
#include "Tools/Commands/Commands.h"

int main(int argc, char** argv)
{
    // A reader that goes away is noticed by the write that fails.
    std::signal(SIGPIPE, SIG_IGN);

    CommandLine line;
    AddSettingCommands(line);
    AddRemoteCommands(line);
    AddScheduleCommands(line);
    AddStatusCommand(line);
    AddCheckCommand(line);
    AddConstantsCommands(line);
    return line.Run(argc, argv);
}
