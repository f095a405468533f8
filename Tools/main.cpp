#include <csignal>

#include "Tools/CommandLine.h"
#include "Tools/Commands/Commands.h"
#include "Tools/HandOver.h"
#include "Tools/Watch/WatchSetting.h"

int main(int argc, char** argv)
{
    // A reader that goes away is noticed by the write that fails.
    std::signal(SIGPIPE, SIG_IGN);

    const auto handOver = [argv](auto&&...) -> ExitCode { HandOver(argv); };
    CommandLine line;
    AddSettingCommands(line, WatchSetting);
    AddRemoteCommands(line, {handOver, handOver});
    AddKeysCommands(line, handOver);
    AddScheduleCommands(line);
    AddStatusCommand(line, handOver);
    AddCheckCommand(line);
    AddConstantsCommands(line);
    AddExplainCommand(line);
    return line.Run(argc, argv);
}
