#include <csignal>
#include <string>

#include "Tools/CommandError.h"
#include "Tools/CommandLine.h"
#include "Tools/Commands/Commands.h"
#include "Tools/Commands/ShowStatus.h"

namespace {

[[noreturn]] void Refuse(const std::string& why)
{
    throw CommandError(ExitCode::kCouldNotRun, why);
}

/// These need the display, and with it the toolkit.
template <typename Options>
ExitCode RefuseRemote(const Options& /*options*/)
{
    Refuse("'remote' needs a display, and this program for the TV is made without; use the remote control");
}

ExitCode RefuseKeys(const WatchKeysOptions& /*options*/)
{
    Refuse("'keys watch' needs a display, and this program for the TV is made without");
}

/// The TV's store delivers changes on the toolkit's main loop.
ExitCode RefuseWatch()
{
    Refuse("'setting watch' needs the toolkit's main loop, and this program for the TV is made without; "
           "'vqmctl setting get' prints the state");
}

} // namespace

/// vqmctl for the TV: all commands in one program, without those that need a display.
int main(int argc, char** argv)
{
    // A reader that goes away is noticed by the write that fails.
    std::signal(SIGPIPE, SIG_IGN);

    CommandLine line;
    AddSettingCommands(line, RefuseWatch);
    AddRemoteCommands(line, {RefuseRemote<HeldKeysOptions>, RefuseRemote<PressOptions>});
    AddKeysCommands(line, RefuseKeys);
    AddScheduleCommands(line);
    AddStatusCommand(line, ShowStatus);
    AddCheckCommand(line);
    AddConstantsCommands(line);
    AddExplainCommand(line);
    return line.Run(argc, argv);
}
