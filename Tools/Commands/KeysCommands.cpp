#include <memory>
#include <utility>

#include "Tools/CommandLine.h"
#include "Tools/Commands/Commands.h"

void AddKeysCommands(CommandLine& line, WatchKeysAction watch)
{
    CLI::App& group = line.AddGroup("keys", "Watch the keys of the keyboard and the remote control");
    const auto options = std::make_shared<WatchKeysOptions>();
    CLI::App& command =
        line.AddCommand(group, "watch", "Print each key event and whether the application holds the key, until Ctrl-C",
                        [options, action = std::move(watch)] { return action(*options); });
    command.add_flag("--json", options->json, "Print Docs/schemas/keys-watch.schema.json on a line for each event");
}
