#include <memory>
#include <utility>

#include "Tools/CommandLine.h"
#include "Tools/Commands/Commands.h"

void AddRemoteCommands(CommandLine& line, RemoteActions actions)
{
    CLI::App& group = line.AddGroup("remote", "A remote control for people without one");
    const auto listed = std::make_shared<HeldKeysOptions>();
    CLI::App& keys = line.AddCommand(group, "keys", "List the keys that the application holds",
                                     [listed, list = std::move(actions.listKeys)] { return list(*listed); });
    keys.add_flag("--keyboard", listed->keyboardOnly,
                  "Only those that the keyboard has, without what 'remote press' has added");

    const auto options = std::make_shared<PressOptions>();
    CLI::App& command = line.AddCommand(group, "press", "Press and release a key that the application holds",
                                        [options, press = std::move(actions.press)] { return press(*options); });
    command.add_option("KEY", options->key, "The key's keysym name, such as XF86SimpleMenu or XF86More")->required();
    command.add_option("--times", options->times, "How often to press it, up to 10000 times")
        ->capture_default_str()
        ->type_name("N")
        ->check(WholeNumber("--times", 1, 10000), "");
    command.add_option("--hold", options->holdMilliseconds, "How long to hold it down each time, up to 60000")
        ->capture_default_str()
        ->type_name("MS")
        ->check(WholeNumber("--hold", 0, 60000), "");
    command
        .add_option("--wait", options->waitMilliseconds, "How long to wait for the application to hold it, up to 60000")
        ->capture_default_str()
        ->type_name("MS")
        ->check(WholeNumber("--wait", 0, 60000), "");
    command.add_flag("--anyway", options->anyway, "Press it whoever receives it, held or not");
}
