#include <csignal>

#include "Tools/CommandLine.h"
#include "Tools/Commands/Commands.h"
#include "Tools/Commands/ShowStatus.h"
#include "Tools/Remote/KeyWatch.h"
#include "Tools/Remote/RemoteKeys.h"
#include "Tools/Remote/RemotePress.h"

/// The commands of vqmctl that ask the display or the session bus. Run by vqmctl, with its arguments.
int main(int argc, char** argv)
{
    // A reader that goes away is noticed by the write that fails.
    std::signal(SIGPIPE, SIG_IGN);

    CommandLine line;
    AddRemoteCommands(line, {ListHeldKeys, PressRemoteKey});
    AddKeysCommands(line, WatchKeys);
    AddStatusCommand(line, ShowStatus);
    return line.Run(argc, argv);
}
